// Pieces of `qxi18n text` kept in files of their own.
#pragma once

#include <fl/i18n/ustring.hpp>

#include <functional>
#include <string>

namespace qxi18n_tool {

/// Prints one row per code point of `text`: U+hhhh, the character as `encode` spells it (blank for
/// controls and lone surrogates), its general category and the classes lcctype gives it.
void print_classification(const ustring& text, const std::function<std::string(const ustring&)>& encode);

}  // namespace qxi18n_tool
