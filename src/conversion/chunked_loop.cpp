// The chunked conversion loop: text of any length through an ICU converter, in spans that
// keep every single ICU call below its 31-bit limits.
#include "conversion_internal.hpp"

namespace fl::i18n::detail {

namespace {

constexpr unsigned long scratch_units = 1024;
constexpr unsigned long to_unicode_source_span = 0x7FFFFFFFUL;
constexpr unsigned long to_unicode_destination_span = 0x10000UL;
constexpr unsigned long from_unicode_source_span = 0x3FFFFFFFUL;
constexpr unsigned long from_unicode_utf8_destination_span = 0x20000UL;

// Leaves the converter without a partial character, whichever way the loop ends.
struct reset_on_exit {
    UConverter* converter;
    ~reset_on_exit() { ucnv_reset(converter); }
};

template <class To, class From, class Step>
unsigned long run_chunked(UConverter* converter, To* destination, unsigned long capacity, const From* source,
                          unsigned long length, unsigned long source_span, unsigned long destination_span,
                          Step step)
{
    reset_on_exit reset{converter};
    To scratch[scratch_units];
    // Output beyond the caller's buffer is counted in the scratch buffer and dropped.
    bool in_scratch = destination == nullptr || capacity == 0;
    To* target = in_scratch ? scratch : destination;
    To* target_end = in_scratch ? scratch + scratch_units : destination + capacity;
    const From* next = source;
    const From* const source_end = source + length;
    unsigned long total = 0;

    for (;;) {
        const unsigned long target_left = static_cast<unsigned long>(target_end - target);
        To* const span_end = in_scratch ? target_end : target + std::min(target_left, destination_span);
        const unsigned long source_left = static_cast<unsigned long>(source_end - next);
        const From* const source_span_end = next + std::min(source_left, source_span);
        const bool flush = source_span_end == source_end;

        To* const before = target;
        UErrorCode status = U_ZERO_ERROR;
        step(converter, &target, span_end, &next, source_span_end, flush, &status);
        total += static_cast<unsigned long>(target - before);

        if (status == U_BUFFER_OVERFLOW_ERROR) {
            if (target == target_end) {
                in_scratch = true;
                target = scratch;
                target_end = scratch + scratch_units;
            }
            continue;
        }
        if (U_FAILURE(status))
            throw_icu_conversion_error(status);
        if (next == source_end)
            return total;
    }
}

}  // namespace

unsigned long chunked_to_unicode(UConverter* converter, char16_t* destination, unsigned long capacity,
                                 const char* source, unsigned long length)
{
    return run_chunked(converter, destination, capacity, source, length, to_unicode_source_span,
                       to_unicode_destination_span,
                       [](UConverter* cnv, char16_t** target, char16_t* target_limit, const char** src,
                          const char* src_limit, bool flush, UErrorCode* status) {
                           ucnv_toUnicode(cnv, target, target_limit, src, src_limit, nullptr, flush, status);
                       });
}

unsigned long chunked_from_unicode(UConverter* converter, char* destination, unsigned long capacity,
                                   const char16_t* source, unsigned long length)
{
    const unsigned long destination_span =
        ucnv_getType(converter) == UCNV_UTF8
            ? from_unicode_utf8_destination_span
            : static_cast<unsigned long>(ucnv_getMaxCharSize(converter)) * 32768UL;
    return run_chunked(converter, destination, capacity, source, length, from_unicode_source_span,
                       destination_span,
                       [](UConverter* cnv, char** target, char* target_limit, const char16_t** src,
                          const char16_t* src_limit, bool flush, UErrorCode* status) {
                           ucnv_fromUnicode(cnv, target, target_limit, src, src_limit, nullptr, flush, status);
                       });
}

}  // namespace fl::i18n::detail
