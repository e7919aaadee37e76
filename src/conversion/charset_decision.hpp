// The rule-bound pieces of charset detection, apart from ICU's detector: the byte scan, the
// threshold parsing and the choice among the detector's matches.
#pragma once

#include <string_view>

namespace fl::i18n::detail {

/// What the leading scan of a block found. When `ascii` is false, `start` and `size` are the bytes
/// the later steps look at: from the first byte with the high bit set to the end, or the whole
/// block when a zero byte stands anywhere but last.
struct byte_scan {
    bool ascii = false;
    bool leading_zero = false;  ///< first byte zero in a block of two bytes or more
    const char* start = nullptr;
    unsigned long size = 0;
};

/// Scans `length` bytes at `data` (non-null when `length` is not 0). Does not allocate.
byte_scan scan_bytes(const char* data, unsigned long length) noexcept;

/// Whether ICU's UTF-8 preflight accepts the bytes: every status but U_INVALID_CHAR_FOUND passes,
/// so a block cut inside a multi-byte character fails. `size` is taken as a 32-bit integer.
bool passes_utf8_preflight(const char* start, unsigned long size) noexcept;

/// A threshold variable's value: strtol base 10, taken as a 32-bit integer, kept only within
/// 1..100; unset (null), unparsable or out of range gives `fallback`.
int parse_threshold(const char* text, int fallback) noexcept;

constexpr int default_confidence_threshold = 90;
constexpr int default_utf8_threshold = 80;

struct charset_match {
    std::string_view name;
    int confidence = 0;
};

enum class charset_choice { top_match, utf8, system_charset };

/// The choice among the detector's best match `first` and its runner-up `second` (null when there
/// is none): the top match if certain, or confident by a margin of half the threshold, and not an
/// EBCDIC Arabic or Hebrew name; else UTF-8 when the top or second match is UTF-8 and the top
/// confidence reaches `utf8_threshold`; else the system's encoding.
charset_choice choose_charset(const charset_match& first, const charset_match* second, int confidence_threshold,
                              int utf8_threshold);

}  // namespace fl::i18n::detail
