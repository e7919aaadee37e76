// The owner of one ICU converter and its call-back state; shared by every ICU-backed converter
// of the library (whole-text, streaming and file-name converters).
#pragma once

#include <unicode/ucnv.h>

#include <cstdint>
#include <memory>
#include <string>

namespace fl::i18n::detail {

struct ucnv_closer {
    void operator()(UConverter* converter) const noexcept { ucnv_close(converter); }
};
using converter_ptr = std::unique_ptr<UConverter, ucnv_closer>;

/// From-UTF-16 call-backs that behave like ICU's stop and escape call-backs, except that an
/// unassigned default-ignorable code point is treated like any other unmappable character
/// instead of being dropped silently.
extern "C" void from_u_callback_stop_with_invisible_chars(const void* context, UConverterFromUnicodeArgs* args,
                                                          const UChar* code_units, int32_t length,
                                                          UChar32 code_point, UConverterCallbackReason reason,
                                                          UErrorCode* status);
extern "C" void from_u_callback_escape_with_invisible_chars(const void* context, UConverterFromUnicodeArgs* args,
                                                            const UChar* code_units, int32_t length,
                                                            UChar32 code_point, UConverterCallbackReason reason,
                                                            UErrorCode* status);

class converter_state {
public:
    /// Opens `encoding` with ucnv_open; throws CvtInvalidEncodingName with that name on failure.
    explicit converter_state(const std::string& encoding);
    /// Takes ownership of an open converter (which may be null).
    explicit converter_state(UConverter* converter) noexcept;
    converter_state(const converter_state&) = delete;
    converter_state& operator=(const converter_state&) = delete;
    ~converter_state();

    UConverter* get() const noexcept { return converter_.get(); }

    /// The MIME, else IANA, else WINDOWS name of the encoding, else ICU's name; cached.
    const std::string& standard_name() const;
    /// Largest bytes per character; 4 for UTF-8, whose ICU converter reports fewer; 0 without converter.
    int max_char_size() const;

    std::uint32_t from_unicode_mode() const noexcept { return from_unicode_mode_; }
    std::uint32_t to_unicode_mode() const noexcept { return to_unicode_mode_; }

    /// Installs a call-back mode for conversion from UTF-16; `substitution` is used by mode 0x10.
    void change_from_unicode_call_back(std::uint32_t mode, const std::string& substitution);
    /// Installs a call-back mode for conversion to UTF-16 (0 or 1 only).
    void change_to_unicode_call_back(std::uint32_t mode);
    void reset_from_unicode_call_back();
    void reset_to_unicode_call_back();

private:
    converter_ptr converter_;
    std::uint32_t from_unicode_mode_ = 0;
    std::uint32_t to_unicode_mode_ = 0;
    UConverterFromUCallback saved_from_action_ = nullptr;
    UConverterToUCallback saved_to_action_ = nullptr;
    const void* saved_from_context_ = nullptr;
    const void* saved_to_context_ = nullptr;
    mutable std::string standard_name_;
    const std::string no_name_;
};

/// Opens `encoding` (empty: the global locale's encoding now) for conversion to UTF-16 and
/// installs `mode` unless it is 0. Throws CvtInvalidEncodingName or the call-back's exception.
std::unique_ptr<converter_state> open_to_unicode_state(const std::string& encoding, std::uint32_t mode);
/// The same for conversion from UTF-16; `substitution` is used by mode 0x10.
std::unique_ptr<converter_state> open_from_unicode_state(const std::string& encoding, std::uint32_t mode,
                                                         const std::string& substitution);

}  // namespace fl::i18n::detail
