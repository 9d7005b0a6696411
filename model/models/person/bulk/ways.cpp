#include "bulk/ways.hpp"

#include "bulk/originals.hpp"
#include "bulk/texts.hpp"

namespace bulk {

bool CalledTexts::add(PyObject* method) {
    python::Ref made = quiet_call(method);
    const auto text = made ? utf8(made) : std::nullopt;
    if (!text || text->find('\0') != std::string_view::npos) return false;
    objects_.push_back(std::move(made));
    texts_.push_back(*text);
    return true;
}

}  // namespace bulk
