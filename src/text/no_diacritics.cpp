// The process-wide diacritics transliterator and the clone-per-call removal built on it.
#include "no_diacritics.hpp"

#include "text_internal.hpp"

#include "common/retry_once.hpp"

#include <fl/i18n/transform.hpp>

#include <cstdint>
#include <stdexcept>

namespace fl::i18n::detail {
namespace {

// Never freed. A failed creation is kept with its status, so that every later call reports it
// instead of trying again.
struct no_diacritics_transliterator {
    UErrorCode status = U_ZERO_ERROR;
    transliterator_ptr transliterator;
};

constexpr char16_t no_diacritics_rule[] = u"any-NFD; [:Nonspacing_Mark:] any-Remove; any-NFC";

fl::detail::retry_once<no_diacritics_transliterator> transliterator_region;

no_diacritics_transliterator* open_shared_transliterator()
{
    auto holder = std::make_unique<no_diacritics_transliterator>();
    constexpr auto rule_length = static_cast<int32_t>(std::size(no_diacritics_rule) - 1);
    holder->transliterator.reset(
        utrans_openU(no_diacritics_rule, rule_length, UTRANS_FORWARD, nullptr, 0, nullptr, &holder->status));
    return holder.release();
}

[[noreturn]] void throw_transform_failure(UErrorCode status)
{
    fl::detail::throw_exception(CtypeTransformFailure(status));
}

}  // namespace

void remove_diacritics(ustring& text)
{
    check_text_size(text.size());
    const auto& shared = transliterator_region.get(open_shared_transliterator);
    if (U_FAILURE(shared.status))
        throw_transform_failure(shared.status);

    // A transliterator keeps state while it works, so each call runs on a clone of its own and
    // the shared one needs no lock.
    UErrorCode status = U_ZERO_ERROR;
    const transliterator_ptr clone(utrans_clone(shared.transliterator.get(), &status));
    if (U_FAILURE(status))
        throw_transform_failure(status);

    const auto capacity = static_cast<int32_t>(text.size());
    int32_t length = capacity;
    int32_t limit = capacity;
    utrans_transUChars(clone.get(), text.data(), &length, capacity, 0, &limit, &status);
    // The text cannot grow in its own buffer: an overflow is a failure here, not a size report.
    if (U_FAILURE(status))
        throw_transform_failure(status);
    text.resize(static_cast<std::size_t>(length));
}

ustring do_transform(const char16_t* src, unsigned long length, const to_no_diacritics&)
{
    if (src == nullptr && length != 0)
        fl::detail::throw_exception(std::logic_error("do_transform: null source with a non-zero length"));
    check_text_size(length);
    ustring text = src == nullptr ? ustring() : ustring(src, length);
    remove_diacritics(text);
    return text;
}

ustring& do_transform(ustring& text, const to_no_diacritics&)
{
    remove_diacritics(text);
    return text;
}

}  // namespace fl::i18n::detail
