#pragma once

// Whether a library's code is still its own. Single calls go through hundreds of functions of pandas and Faker, and any
// of them may have been replaced: by a wrapper that shows progress, a mended method, a test's mock.

#include <Python.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace bulk {

/// A package that is looked through once, and again after anything in its modules and classes has changed, which the
/// interpreter tells.
class Package {
  public:
    explicit Package(const char* name) : name_(name) {}

    /// Whether all its functions and classes come from its own files. What somebody has added under a name that no code
    /// of the package, nor ours, mentions does not count: nothing calls it.
    bool is_genuine();

    /// Whether the object is a Python function from the package's files, inside whatever wrappers of its own.
    [[nodiscard]] bool defines(PyObject* function) const;

    /// How many changes there have been in it, its options included.
    [[nodiscard]] std::uint64_t changes() const { return changes_; }
    void note_change() { ++changes_; }

    /// Whether the class is one of the package's.
    [[nodiscard]] bool has_class(PyTypeObject* type) const;

  private:
    bool look();
    void find_folders();
    void look_at_module(PyObject* module);
    void look_at_class(PyTypeObject* type);
    void look_at(PyObject* name, PyObject* value);
    [[nodiscard]] bool is_known(PyObject* value);
    [[nodiscard]] bool is_known_function(PyObject* function, int depth = 0) const;
    [[nodiscard]] bool is_known_callable(PyObject* value);
    [[nodiscard]] bool comes_from_known_file(PyObject* function) const;
    [[nodiscard]] bool is_named_after_package(PyObject* module_name) const;
    [[nodiscard]] bool is_called(std::string_view name) const;

    std::string_view name_;
    std::vector<std::string> folders_;  ///< of the package itself, and of what it imports
    std::uint64_t changes_ = 1;
    std::uint64_t looked_at_ = 0;  ///< the number of changes that the last look knew of
    bool genuine_ = false;         ///< what it came to

    // What one look goes through. Nothing of it is owned: no Python code runs meanwhile.
    std::unordered_set<PyTypeObject*> classes_;
    std::vector<PyObject*> functions_;
    std::vector<std::string> foreign_;  ///< names of what is not the package's own
};

Package& pandas_code();
Package& faker_code();

}  // namespace bulk
