// Scanning UTF-16 text for the first code point in or out of a set of POSIX-like classes.
#pragma once

#include <fl/i18n/character_handling.hpp>
#include <fl/i18n/export.hpp>
#include <fl/i18n/ustring.hpp>

namespace fl::i18n::detail {

/// True when `c` belongs to one of the classes of `mask` (the bits of lcctype::ascii_class;
/// punct covers punctuation and symbols but not So).
QXI18N_API bool char_matches_mask(unsigned int mask, char32_t c);

// Forward forms: the start of the first code point for which the predicate holds, else `last`.
// A surrogate pair is tested as one code point; the unit after the current one is read without a
// bounds test, since the text is terminated.
QXI18N_API char16_t* scan(unsigned int mask, char16_t* first, char16_t* last, const is_posix& pred);
QXI18N_API char16_t* scan(unsigned int mask, char16_t* first, char16_t* last, const is_not_posix& pred);
QXI18N_API const char16_t* scan(unsigned int mask, const char16_t* first, const char16_t* last,
                                const is_posix& pred);
QXI18N_API const char16_t* scan(unsigned int mask, const char16_t* first, const char16_t* last,
                                const is_not_posix& pred);
QXI18N_API ustring::iterator scan(unsigned int mask, ustring::iterator first, ustring::iterator last,
                                  const is_posix& pred);
QXI18N_API ustring::iterator scan(unsigned int mask, ustring::iterator first, ustring::iterator last,
                                  const is_not_posix& pred);
QXI18N_API ustring::const_iterator scan(unsigned int mask, ustring::const_iterator first,
                                        ustring::const_iterator last, const is_posix& pred);
QXI18N_API ustring::const_iterator scan(unsigned int mask, ustring::const_iterator first,
                                        ustring::const_iterator last, const is_not_posix& pred);

// Reverse forms: the same decoder read backwards, joining a unit with the next one read only when
// the first is high and the second low, so a well-ordered pair is seen as two lone surrogates.
QXI18N_API ustring::reverse_iterator scan(unsigned int mask, ustring::reverse_iterator first,
                                          ustring::reverse_iterator last, const is_posix& pred);
QXI18N_API ustring::reverse_iterator scan(unsigned int mask, ustring::reverse_iterator first,
                                          ustring::reverse_iterator last, const is_not_posix& pred);
QXI18N_API ustring::const_reverse_iterator scan(unsigned int mask, ustring::const_reverse_iterator first,
                                                ustring::const_reverse_iterator last, const is_posix& pred);
QXI18N_API ustring::const_reverse_iterator scan(unsigned int mask, ustring::const_reverse_iterator first,
                                                ustring::const_reverse_iterator last,
                                                const is_not_posix& pred);

}  // namespace fl::i18n::detail
