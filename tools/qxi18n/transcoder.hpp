// The engine of `qxi18n convert`: inputs streamed block by block through the library's
// streaming converters into one output stream.
#pragma once

#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/stream_codecvt.hpp>

#include <cstddef>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qxi18n_tool {

class block_reader;

/// The -f value that asks for the encoding of each input to be detected.
inline constexpr const char* detected_encoding = "auto";

/// What `qxi18n convert` was asked to do.
struct convert_settings {
    std::string from;  ///< an encoding, or detected_encoding
    std::string to;
    /// cvt_call_back_stop, cvt_call_back_default (substitute) or an escape. It applies to the
    /// output side; the input side stops in stop mode and substitutes in all others.
    fl::i18n::codecvt_call_back_mode mode = fl::i18n::cvt_call_back_stop;
    /// Bytes read at a time.
    std::size_t block_size = 64 * 1024;
};

/// Converts inputs one after the other into one output stream, in memory bounded by the block
/// size, whatever the size of the inputs.
class transcoder {
public:
    /// Opens the encodings; throws CvtInvalidEncodingName for a name ICU does not know.
    transcoder(const convert_settings& settings, std::FILE* out);
    ~transcoder();

    /// Converts one input (`name` is for messages). Returns false after reporting the first
    /// sequence that cannot be converted; every line before it has been written. Throws
    /// read_error or io_error when reading or writing fails, CvtInvalidEncodingName if a detected
    /// encoding cannot be opened.
    bool run(std::FILE* in, const std::string& name);
    /// Ends the output stream: writes what the output encoding still holds (a final shift back).
    /// Call it once, after the last input or after a failure. Returns false after reporting a
    /// character that the end leaves incomplete. Throws io_error when writing fails.
    bool finish();

private:
    struct failure {
        std::size_t line;  // 0 when lines were not counted
        std::string what;
    };

    template <class Unit, class Converter, class Emit>
    std::optional<failure> pump(const Converter& in, block_reader& reader, Unit* stage, Emit emit);
    std::optional<failure> emit_units(const char16_t* units, std::size_t count, std::size_t lines_before);
    std::size_t convert_units(const char16_t* units, std::size_t count, bool flush);
    void write(const char* bytes, std::size_t count);

    convert_settings settings_;
    std::FILE* out_;
    bool stop_;
    bool to_utf8_;  // lenient UTF-8 output: bytes go through the multi-streaming converter
    std::unique_ptr<fl::i18n::stream_codecvt_ustring_to_string> output_;
    std::unique_ptr<char16_t[]> units_;
    std::unique_ptr<char[]> utf8_;
    std::vector<char> bytes_;  // output of one batch of units
};

}  // namespace qxi18n_tool
