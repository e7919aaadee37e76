// What the tool must know about an encoding before it may cut a text in it into pieces.
#pragma once

#include <cstddef>
#include <string>

namespace qxi18n_tool {

/// Properties of an encoding that ICU can open.
struct encoding_traits {
    /// The meaning of a byte depends on earlier shifts (ISO-2022, HZ, UTF-7, SCSU, BOCU-1,
    /// stateful EBCDIC, IMAP mailbox names, LMBCS, ISCII, COMPOUND_TEXT): a piece cut from
    /// the middle of a text cannot be converted on its own.
    bool stateful = false;
    /// 2 or 4 for "UTF-16" and "UTF-32", whose byte order comes from a byte order mark; else 0.
    std::size_t byte_order_mark_width = 0;
    /// The smallest number of bytes of one character; line ends are only looked for at
    /// offsets that are multiples of it.
    std::size_t min_char_size = 1;
};

/// Asks ICU about `encoding`. The name must already be known to open; if ICU cannot open it
/// after all, the traits are the careful ones (stateful).
encoding_traits probe_encoding(const std::string& encoding);

/// For a byte-order-marked encoding (width 2 or 4): the explicit encoding that `head`, the
/// first bytes of a text, calls for, and in `mark_length` the length of its mark. Without a
/// mark the text is big-endian, as ICU reads it.
std::string byte_order_encoding(std::size_t width, const std::string& head, std::size_t& mark_length);

}  // namespace qxi18n_tool
