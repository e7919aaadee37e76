// Concrete converters: ICU-backed encodings, strict or lenient ASCII, wide text, Java modified UTF-8.
#pragma once

#include <fl/i18n/converter.hpp>
#include <fl/i18n/export.hpp>

#include <cstdint>
#include <memory>
#include <string>

namespace fl::i18n {

namespace detail {
class converter_state;
}

/// What a converter does with a character it cannot convert. Values with a bit of 0x7F00 set
/// are escapes (only from UTF-16); the table of each direction decides which modes it accepts.
enum codecvt_call_back_mode : std::uint32_t {
    cvt_call_back_default = 0,            ///< ICU's default: the encoding's substitution, or U+FFFD
    cvt_call_back_stop = 1,               ///< fail with CvtInvalidCharacter
    cvt_call_back_substitute = 0x10,      ///< from UTF-16 only: the caller's substitution bytes
    cvt_call_back_not_implemented = 0x20, ///< accepted by neither direction
    cvt_call_back_escape_icu = 0x100,     ///< %Uhhhh
    cvt_call_back_escape_java = 0x200,    ///< \uhhhh
    cvt_call_back_escape_c = 0x400,       ///< \uhhhh and \Uhhhhhhhh
    cvt_call_back_escape_xml_dec = 0x800, ///< &#DDDD;
    cvt_call_back_escape_xml_hex = 0x1000,///< &#xhhhh;
    cvt_call_back_escape_unicode = 0x2000,///< {U+hhhh}
    cvt_call_back_escape_css2 = 0x4000,   ///< \hhhh
};

/// Any encoding ICU can open, to UTF-16. Text of any length: ICU is fed in chunks below 2^31.
/// Throws CvtInvalidCharacter (bad or unmappable sequence under the stop call-back),
/// CvtConversionFailure (truncated sequence, other ICU failures, moved-from object).
/// The ICU converter is reset after every call, so serial reuse after a throw is safe.
class QXI18N_API codecvt_string_to_ustring : public converter<char16_t, char> {
public:
    /// Opens `encoding` (an empty name means the encoding of the global locale at construction). With `substitute` false a bad
    /// sequence throws; with true it becomes U+FFFD. Throws CvtInvalidEncodingName.
    codecvt_string_to_ustring(const std::string& encoding, bool substitute);
    /// Opens `encoding` and installs `mode` unless it is cvt_call_back_default.
    codecvt_string_to_ustring(codecvt_call_back_mode mode, const std::string& encoding);
    codecvt_string_to_ustring(codecvt_string_to_ustring&& other) noexcept;
    codecvt_string_to_ustring& operator=(codecvt_string_to_ustring&& other) noexcept;
    ~codecvt_string_to_ustring() override;

    /// Installs `mode`: cvt_call_back_default or cvt_call_back_stop; others throw
    /// CvtNonSupportedMode (known modes) or CvtInvalidArgument (unknown values).
    void change_call_back(codecvt_call_back_mode mode);
    /// Restores ICU's default action.
    void reset_call_back();
    /// The mode in force; 0 for ICU's default or an object without state.
    codecvt_call_back_mode get_call_back_mode() const;

protected:
    unsigned long do_get_destination_size(const char* source, unsigned long source_length) const override;
    ustring do_convert(const char* source, unsigned long source_length) const override;
    unsigned long do_convert(char16_t* destination, unsigned long destination_capacity,
                             const char* source, unsigned long source_length) const override;

private:
    std::unique_ptr<detail::converter_state> state_;
};

/// UTF-16 to any encoding ICU can open; same length and reuse rules as codecvt_string_to_ustring.
class QXI18N_API codecvt_ustring_to_string : public converter<char, char16_t> {
public:
    /// Opens `encoding` (empty means the encoding of the global locale at construction). With `substitute` false an unmappable
    /// character throws; with true it becomes the encoding's substitution character.
    codecvt_ustring_to_string(const std::string& encoding, bool substitute);
    /// Opens `encoding` and installs `mode` (with `substitution` for cvt_call_back_substitute).
    codecvt_ustring_to_string(codecvt_call_back_mode mode, const std::string& encoding,
                              const std::string& substitution);
    codecvt_ustring_to_string(codecvt_ustring_to_string&& other) noexcept;
    codecvt_ustring_to_string& operator=(codecvt_ustring_to_string&& other) noexcept;
    ~codecvt_ustring_to_string() override;

    /// Installs `mode`. cvt_call_back_substitute sets the encoding's substitution bytes to
    /// `substitution` (1 to 127 bytes, taken as they are) and leaves the reported mode at 0.
    void change_call_back(codecvt_call_back_mode mode, const std::string& substitution);
    /// Restores ICU's default action (substitution bytes stay as set).
    void reset_call_back();
    /// The mode in force; 0 for ICU's default or an object without state.
    codecvt_call_back_mode get_call_back_mode() const;

protected:
    unsigned long do_get_destination_size(const char16_t* source, unsigned long source_length) const override;
    std::string do_convert(const char16_t* source, unsigned long source_length) const override;
    unsigned long do_convert(char* destination, unsigned long destination_capacity,
                             const char16_t* source, unsigned long source_length) const override;

private:
    std::unique_ptr<detail::converter_state> state_;
};

/// 7-bit ASCII to UTF-16. A byte above 127 throws CvtInvalidCharacter, or becomes U+FFFD
/// when substituting. The buffer form converts min(capacity, length) units and returns that count.
class QXI18N_API codecvt_ascii_to_ustring : public converter<char16_t, char> {
public:
    explicit codecvt_ascii_to_ustring(bool substitute = false) : substitute_(substitute) {}

protected:
    unsigned long do_get_destination_size(const char* source, unsigned long source_length) const override;
    ustring do_convert(const char* source, unsigned long source_length) const override;
    unsigned long do_convert(char16_t* destination, unsigned long destination_capacity,
                             const char* source, unsigned long source_length) const override;

private:
    bool substitute_;
};

/// UTF-16 to 7-bit ASCII. A unit above 127 throws CvtInvalidCharacter, or becomes the byte
/// 0xFF when substituting. The buffer form converts min(capacity, length) units and returns that count.
class QXI18N_API codecvt_ustring_to_ascii : public converter<char, char16_t> {
public:
    explicit codecvt_ustring_to_ascii(bool substitute = false) : substitute_(substitute) {}

protected:
    unsigned long do_get_destination_size(const char16_t* source, unsigned long source_length) const override;
    std::string do_convert(const char16_t* source, unsigned long source_length) const override;
    unsigned long do_convert(char* destination, unsigned long destination_capacity,
                             const char16_t* source, unsigned long source_length) const override;

private:
    bool substitute_;
};

/// Code points (wchar_t is 32-bit here) to UTF-16. Not validated; never throws.
class QXI18N_API codecvt_wstring_to_ustring : public converter<char16_t, wchar_t> {
public:
    codecvt_wstring_to_ustring() = default;

protected:
    unsigned long do_get_destination_size(const wchar_t* source, unsigned long source_length) const override;
    ustring do_convert(const wchar_t* source, unsigned long source_length) const override;
    unsigned long do_convert(char16_t* destination, unsigned long destination_capacity,
                             const wchar_t* source, unsigned long source_length) const override;
};

/// UTF-16 to code points; an unpaired surrogate becomes U+FFFD. Never throws.
class QXI18N_API codecvt_ustring_to_wstring : public converter<wchar_t, char16_t> {
public:
    codecvt_ustring_to_wstring() = default;

protected:
    unsigned long do_get_destination_size(const char16_t* source, unsigned long source_length) const override;
    std::wstring do_convert(const char16_t* source, unsigned long source_length) const override;
    unsigned long do_convert(wchar_t* destination, unsigned long destination_capacity,
                             const char16_t* source, unsigned long source_length) const override;
};

/// UTF-16 to the JVM's modified UTF-8: U+0000 becomes C0 80 and a supplementary character two
/// three-byte surrogates. Throws CvtSizeTooLarge for 2^31 units or more.
class QXI18N_API codecvt_ustring_to_java_nonstandard_utf8 : public converter<char, char16_t> {
public:
    codecvt_ustring_to_java_nonstandard_utf8() = default;

protected:
    unsigned long do_get_destination_size(const char16_t* source, unsigned long source_length) const override;
    std::string do_convert(const char16_t* source, unsigned long source_length) const override;
    unsigned long do_convert(char* destination, unsigned long destination_capacity,
                             const char16_t* source, unsigned long source_length) const override;
};

}  // namespace fl::i18n
