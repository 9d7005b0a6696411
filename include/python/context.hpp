#pragma once

#include <Python.h>

#include "python/call.hpp"
#include "python/error.hpp"
#include "python/function.hpp"
#include "python/ref.hpp"

namespace python {

/// One pass through a with statement.
class Context {
  public:
    /// Enters the manager; what its `__enter__` returns is not kept.
    explicit Context(PyObject* manager);

    void leave();

    /// Leaves with the exception just raised. Goes on unwinding unless the manager swallows it.
    void leave_with_error(const Function& function);

  private:
    Ref exit_;
};

/// Runs the block inside the manager, as `with manager: block` in the body of the function.
template <class Block>
void with(PyObject* manager, const Function& function, Block block) {
    Context context(manager);
    try {
        block();
    } catch (...) {
        set_indicator_from_current_exception();
        context.leave_with_error(function);
        return;
    }
    context.leave();
}

}  // namespace python
