// Removing leading and trailing code units that belong to a set.
#pragma once

#include <fl/i18n/export.hpp>
#include <fl/i18n/ustring.hpp>

namespace fl::i18n {

// `set` is a list of code units, each tested on its own (a surrogate pair stands for its two
// halves). An empty set leaves the text as it is.
QXI18N_API ustring& trim(ustring& text, const ustring& set);
QXI18N_API ustring& trim_left(ustring& text, const ustring& set);
QXI18N_API ustring& trim_right(ustring& text, const ustring& set);
QXI18N_API ustring trim_copy(const ustring& text, const ustring& set);
QXI18N_API ustring trim_copy_left(const ustring& text, const ustring& set);
QXI18N_API ustring trim_copy_right(const ustring& text, const ustring& set);

}  // namespace fl::i18n
