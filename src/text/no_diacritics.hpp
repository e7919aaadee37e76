// Removal of diacritics through one process-wide ICU transliterator, cloned for every call.
#pragma once

#include <fl/i18n/ustring.hpp>

#include <unicode/utrans.h>

#include <memory>

namespace fl::i18n::detail {

struct utrans_closer {
    void operator()(UTransliterator* transliterator) const noexcept { utrans_close(transliterator); }
};
using transliterator_ptr = std::unique_ptr<UTransliterator, utrans_closer>;

/// Decomposes `text`, drops its non-spacing marks and recomposes it, in place. The text may not
/// grow; ICU failures, including an output longer than the input, throw CtypeTransformFailure
/// and leave `text` partly processed. A text of 2^31 units or more throws CtypeSizeTooLarge.
void remove_diacritics(ustring& text);

}  // namespace fl::i18n::detail
