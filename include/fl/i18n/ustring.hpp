// The library's one text type: UTF-16 code units, not validated.
#pragma once

#include <string>
#include <string_view>

/// UTF-16 text. Lone surrogates may occur; every conversion states what it does with them.
using ustring = std::basic_string<char16_t>;

namespace fl {
using ::ustring;
/// A non-owning view of UTF-16 text.
using ustring_view = std::basic_string_view<char16_t>;
}  // namespace fl
