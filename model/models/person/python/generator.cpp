#include "python/generator.hpp"

namespace python {

void raise_from_generator() {
    RaisedException raised;
    if (!raised.matches(PyExc_StopIteration)) raised.raise_again();
    Ref error = call(PyExc_RuntimeError, {string("generator raised StopIteration").get()});
    PyException_SetCause(error, Py_NewRef(raised.get()));
    const Handling handling(raised.get());
    raise(error);
}

}  // namespace python
