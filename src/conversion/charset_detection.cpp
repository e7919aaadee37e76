// detect_charset: ASCII and UTF-8 by rule, then ICU's detector under a margin, with a UTF-8 rescue.
#include "charset_decision.hpp"

#include <fl/i18n/charset_detection.hpp>
#include <fl/i18n/conversion.hpp>
#include <fl/i18n/locale.hpp>

#include <unicode/ucsdet.h>

#include <cstdlib>
#include <memory>
#include <ostream>

namespace fl::i18n {

namespace {

struct ucsdet_closer {
    void operator()(UCharsetDetector* detector) const noexcept { ucsdet_close(detector); }
};
using detector_ptr = std::unique_ptr<UCharsetDetector, ucsdet_closer>;

bool exists(const char* variable) { return std::getenv(variable) != nullptr; }

// ICU's complaints never stop detection; they are only shown. The labels are kept as the
// diagnostics have always spelled them.
void report(bool enabled, std::ostream& diagnostics, const char* label, UErrorCode status)
{
    if (enabled && status != U_ZERO_ERROR)
        diagnostics << label << " returned error: [" << static_cast<int>(status) << "]\n";
}

}  // namespace

std::string detect_charset(const char* data, unsigned long length, std::ostream& diagnostics,
                           const ustring& source_name)
{
    // Read once, in this order, on the first call: later changes of the environment are not seen.
    static const std::string system_charset = QxLocale::system().getDefaultEncoding();
    static const std::string ascii_charset = exists("QX_USE_DEFAULT_CHARSET_FOR_ASCII") ? system_charset : "UTF-8";
    static const bool detection_disabled = exists("QX_NO_CHARSET_DETECTION");
    static const bool diagnostics_enabled = exists("QX_CHARSET_DETECT_DIAG");

    if (detection_disabled || data == nullptr || length == 0)
        return ascii_charset;
    const detail::byte_scan scan = detail::scan_bytes(data, length);
    if (scan.ascii)
        return ascii_charset;
    // Text with a leading zero byte is UTF-16 or UTF-32 big-endian, never UTF-8 worth a test.
    if (!scan.leading_zero && detail::passes_utf8_preflight(scan.start, scan.size)) {
        if (diagnostics_enabled)
            diagnostics << "Validated encoding: UTF-8\n";
        return "UTF-8";
    }

    // Built even when unused, so that a name the default encoding cannot hold fails alike either way.
    const std::string heading = "Autodetecting encoding for " + to_string(source_name) + "\n";
    if (diagnostics_enabled)
        diagnostics << heading;

    // One status runs through the calls, so a failed open turns the rest into no-ops.
    UErrorCode status = U_ZERO_ERROR;
    const detector_ptr detector(ucsdet_open(&status));
    report(diagnostics_enabled, diagnostics, "uscdet_open", status);
    ucsdet_setText(detector.get(), scan.start, static_cast<int32_t>(scan.size), &status);
    report(diagnostics_enabled, diagnostics, "uscdet_setText", status);
    int32_t count = 0;
    const UCharsetMatch** matches = ucsdet_detectAll(detector.get(), &count, &status);
    report(diagnostics_enabled, diagnostics, "uscdet_detectAll", status);

    if (diagnostics_enabled) {
        for (int32_t i = 0; i < count; ++i) {
            const char* name = ucsdet_getName(matches[i], &status);
            report(diagnostics_enabled, diagnostics, "uscdet_getName", status);
            const int32_t confidence = ucsdet_getConfidence(matches[i], &status);
            report(diagnostics_enabled, diagnostics, "uscdet_getConfidence", status);
            diagnostics << "Match[" << i << "] (" << confidence << ") " << (name ? name : "") << '\n';
        }
    }

    std::string result = system_charset;
    if (count > 0) {
        static const int confidence_threshold = detail::parse_threshold(
            std::getenv("QX_CHARSET_DETECT_THRESHOLD"), detail::default_confidence_threshold);
        static const int utf8_threshold = detail::parse_threshold(std::getenv("QX_CHARSET_DETECT_UTF8_THRESHOLD"),
                                                                  detail::default_utf8_threshold);
        const auto match_at = [&](int32_t i) {
            const char* name = ucsdet_getName(matches[i], &status);
            return detail::charset_match{name ? name : "", ucsdet_getConfidence(matches[i], &status)};
        };
        const detail::charset_match first = match_at(0);
        detail::charset_match second;
        if (count > 1)
            second = match_at(1);
        switch (detail::choose_charset(first, count > 1 ? &second : nullptr, confidence_threshold, utf8_threshold)) {
        case detail::charset_choice::top_match:
            result.assign(first.name);
            break;
        case detail::charset_choice::utf8:
            result = "UTF-8";
            break;
        case detail::charset_choice::system_charset:
            break;
        }
    }
    if (diagnostics_enabled)
        diagnostics << "Detected encoding: " << result << '\n';
    return result;
}

}  // namespace fl::i18n
