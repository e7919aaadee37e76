// The byte scan, threshold parsing and match choice of charset detection; no detector involved.
#include "charset_decision.hpp"

#include <unicode/ustring.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unordered_set>

namespace fl::i18n::detail {

byte_scan scan_bytes(const char* data, unsigned long length) noexcept
{
    byte_scan scan;
    scan.leading_zero = length >= 2 && data[0] == '\0';
    // Eight bytes at a time while none is zero or high and the last byte is still ahead; the
    // first word that holds either is looked at byte by byte below.
    constexpr std::uint64_t ones = 0x0101010101010101U, highs = 0x8080808080808080U;
    unsigned long i = 0;
    for (std::uint64_t word; i + sizeof word < length; i += sizeof word) {
        std::memcpy(&word, data + i, sizeof word);
        // A zero byte borrows into its high bit; a high byte has it already.
        if ((((word - ones) | word) & highs) != 0)
            break;
    }
    for (; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(data[i]);
        // A zero byte inside the block means UTF-16 or UTF-32 is possible: keep every byte.
        if (byte == 0 && i + 1 != length) {
            scan.start = data;
            scan.size = length;
            return scan;
        }
        // The ASCII prefix says nothing about the encoding of the rest.
        if (byte >= 0x80) {
            scan.start = data + i;
            scan.size = length - i;
            return scan;
        }
    }
    scan.ascii = true;
    return scan;
}

bool passes_utf8_preflight(const char* start, unsigned long size) noexcept
{
    UErrorCode status = U_ZERO_ERROR;
    int32_t needed = 0;
    u_strFromUTF8(nullptr, 0, &needed, start, static_cast<int32_t>(size), &status);
    return status != U_INVALID_CHAR_FOUND;
}

int parse_threshold(const char* text, int fallback) noexcept
{
    if (text == nullptr)
        return fallback;
    const auto value = static_cast<std::int32_t>(std::strtol(text, nullptr, 10));
    return value >= 1 && value <= 100 ? value : fallback;
}

charset_choice choose_charset(const charset_match& first, const charset_match* second, int confidence_threshold,
                              int utf8_threshold)
{
    // ICU's EBCDIC Arabic and Hebrew recognisers claim too much ordinary text.
    static const std::unordered_set<std::string> rejected_charsets{"IBM420_ltr", "IBM420_rtl", "IBM424_ltr",
                                                                   "IBM424_rtl"};
    const bool candidate = first.confidence == 100 ||
                           (first.confidence >= confidence_threshold &&
                            (second == nullptr || first.confidence - second->confidence >= confidence_threshold / 2));
    if (candidate && rejected_charsets.count(std::string(first.name)) == 0)
        return charset_choice::top_match;
    // The runner-up is rescued on the top match's confidence, not its own.
    if (first.name == "UTF-8" && first.confidence >= utf8_threshold)
        return charset_choice::utf8;
    if (second != nullptr && second->name == "UTF-8" && first.confidence >= utf8_threshold)
        return charset_choice::utf8;
    return charset_choice::system_charset;
}

}  // namespace fl::i18n::detail
