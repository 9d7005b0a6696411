#pragma once

namespace python {

/// Adds an entry to the traceback of the exception just raised: `name` behind the module's own name and a dot is what
/// the entry shows.
void add_traceback(const char* name, int line) noexcept;

/// The same with the whole text to show.
void add_traceback_entry(const char* shown, int line) noexcept;

}  // namespace python
