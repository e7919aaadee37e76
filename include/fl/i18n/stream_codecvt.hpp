// Streaming converters: text fed in pieces that may end inside a character, converted in the
// manner of std::codecvt::in/out with the ICU converter's state kept between calls.
#pragma once

#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/converter.hpp>
#include <fl/i18n/export.hpp>

#include <cstdint>
#include <memory>
#include <string>

namespace fl::i18n {

namespace detail {
class converter_state;
}

/// Bytes of a named encoding to UTF-16. A partial character at the end of a piece waits inside
/// the converter for the next call, unless that call flushes. A failure resets the state and
/// throws CvtInvalidCharacter or CvtConversionFailure; the object can then serve a new stream.
class QXI18N_API stream_codecvt_string_to_ustring : public stream_converter<char16_t, char> {
public:
    /// Opens `encoding` (empty: the global locale's encoding at construction). With `substitute`
    /// false a bad sequence throws; with true it becomes U+FFFD. Throws CvtInvalidEncodingName.
    stream_codecvt_string_to_ustring(const std::string& encoding, bool substitute);
    ~stream_codecvt_string_to_ustring() override;

protected:
    bool do_convert(char16_t** destination, char16_t* destination_end, const char** source,
                    const char* source_end, bool flush) const override;
    void do_reset_state() const override;
    /// Always 2: a supplementary character is two units.
    int do_max_char_size() const override;

private:
    std::unique_ptr<detail::converter_state> state_;
};

/// UTF-16 to bytes of a named encoding; the same rules as stream_codecvt_string_to_ustring.
class QXI18N_API stream_codecvt_ustring_to_string : public stream_converter<char, char16_t> {
public:
    /// Opens `encoding` (empty: the global locale's encoding at construction). With `substitute`
    /// false an unmappable character throws; with true it becomes the encoding's substitution
    /// character. Throws CvtInvalidEncodingName.
    stream_codecvt_ustring_to_string(const std::string& encoding, bool substitute);
    /// Opens `encoding` and installs `mode` for unmappable characters, with the rules and
    /// exceptions of codecvt_ustring_to_string::change_call_back (`substitution` is used by
    /// cvt_call_back_substitute).
    stream_codecvt_ustring_to_string(codecvt_call_back_mode mode, const std::string& encoding,
                                     const std::string& substitution);
    ~stream_codecvt_ustring_to_string() override;

protected:
    bool do_convert(char** destination, char* destination_end, const char16_t** source,
                    const char16_t* source_end, bool flush) const override;
    void do_reset_state() const override;
    /// The encoding's largest character in bytes (4 for UTF-8).
    int do_max_char_size() const override;

private:
    std::unique_ptr<detail::converter_state> state_;
};

namespace detail {

/// The direction of a stream_codecvt_multi_streaming_converter.
enum MultiStreamConvType {
    utf8_to_named_encoding = 0,  ///< `source` is UTF-8, `target` the named encoding
    named_encoding_to_utf8 = 1,  ///< `source` is the named encoding, `target` UTF-8
};

/// Bytes to bytes between UTF-8 and a named encoding, through a UTF-16 pivot of 4096 units that
/// is allocated once and carries characters from one call to the next. With `substitute` true
/// and type 0, a character the named encoding lacks is written as "&#xHHHH;". A failure resets
/// both sides and empties the pivot, so what it held before the bad sequence is not written.
/// Null pointers around an empty source or destination range are accepted.
class QXI18N_API stream_codecvt_multi_streaming_converter : public stream_converter<char, char> {
public:
    /// Throws CvtInvalidEncodingName, or CvtCallBackSettingFailure from the call-back change.
    stream_codecvt_multi_streaming_converter(const std::string& encoding, MultiStreamConvType type, bool substitute);
    ~stream_codecvt_multi_streaming_converter() override;

protected:
    bool do_convert(char** destination, char* destination_end, const char** source, const char* source_end,
                    bool flush) const override;
    void do_reset_state() const override;
    /// The largest character of the named encoding in bytes; 0 for an unknown type.
    int do_max_char_size() const override;

private:
    struct pivot_block;

    std::unique_ptr<converter_state> target_;
    std::unique_ptr<converter_state> source_;
    std::unique_ptr<pivot_block> pivot_;
    MultiStreamConvType type_;
};

}  // namespace detail

/// UTF-8 to a named encoding (empty: the global locale's encoding at construction).
class QXI18N_API stream_codecvt_utf8string_to_string : public detail::stream_codecvt_multi_streaming_converter {
public:
    stream_codecvt_utf8string_to_string(const std::string& encoding, bool substitute);
};

/// A named encoding (empty: the global locale's encoding at construction) to UTF-8.
class QXI18N_API stream_codecvt_string_to_utf8string : public detail::stream_codecvt_multi_streaming_converter {
public:
    stream_codecvt_string_to_utf8string(const std::string& encoding, bool substitute);
};

}  // namespace fl::i18n
