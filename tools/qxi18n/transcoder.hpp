// The engine of `qxi18n convert`: input in pieces cut at line ends, each converted on its own.
#pragma once

#include "encoding_traits.hpp"
#include "pieces.hpp"

#include <fl/i18n/codecvt.hpp>

#include <cstddef>
#include <cstdio>
#include <map>
#include <memory>
#include <string>

namespace qxi18n_tool {

/// What `qxi18n convert` was asked to do.
struct convert_settings {
    std::string from;
    std::string to;
    /// cvt_call_back_stop, cvt_call_back_default (substitute) or an escape. It applies to the
    /// output side; the input side stops in stop mode and substitutes U+FFFD in all others.
    fl::i18n::codecvt_call_back_mode mode = fl::i18n::cvt_call_back_stop;
    /// Bytes read at a time; a piece is cut after the last line end read so far.
    std::size_t piece_size = 64 * 1024;
};

/// Writes converted bytes to a stream. Some encodings open every conversion with a mark or a
/// shift (the byte order mark of "UTF-16", the "~}" of HZ); it is kept at the very start only.
class output_sink {
public:
    output_sink(std::FILE* out, std::string per_call_prefix);
    /// Throws io_error if the stream refuses the bytes.
    void write(const std::string& bytes);

private:
    std::FILE* out_;
    std::string prefix_;
    bool started_ = false;
};

/// Converts inputs one after the other into one output stream.
class transcoder {
public:
    /// Opens both encodings; throws CvtInvalidEncodingName for a name ICU does not know.
    transcoder(const convert_settings& settings, std::FILE* out);
    ~transcoder();

    /// Converts one input (`name` is for messages). Returns false after reporting the first
    /// sequence that cannot be converted; every complete line before it has been written.
    /// Throws read_error or io_error when reading or writing fails.
    bool run(std::FILE* in, const std::string& name);

private:
    struct input_side;

    const input_side& input(const std::string& encoding);
    std::string convert(const input_side& side, const char* data, std::size_t size) const;
    void report_failure(const input_side& side, const std::string& data, std::size_t lines_before,
                        const std::string& name);

    convert_settings settings_;
    encoding_traits from_traits_;
    bool to_stateful_ = false;
    std::unique_ptr<fl::i18n::codecvt_ustring_to_string> output_;
    std::map<std::string, std::unique_ptr<input_side>> inputs_;
    std::unique_ptr<output_sink> sink_;
};

}  // namespace qxi18n_tool
