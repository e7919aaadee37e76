// Converting inputs piece by piece, and finding the line of the first bad sequence.
#include "transcoder.hpp"

#include "cli.hpp"

#include <fl/i18n/conversion.hpp>
#include <fl/i18n/conversion_error.hpp>

#include <cerrno>
#include <cstring>
#include <vector>

namespace qxi18n_tool {

using namespace fl::i18n;

struct transcoder::input_side {
    codecvt_string_to_ustring converter;
    line_ends ends;
    bool whole;  // the input cannot be cut: it is converted in one call
};

namespace {

// The bytes that one more "\n" adds in `encoding`. Encoding "\n\n" and "\n" and taking the
// difference leaves out a byte order mark or an opening shift that starts every call.
line_ends find_line_ends(const std::string& encoding, std::size_t align)
{
    try {
        const codecvt_ustring_to_string encoder(encoding, false);
        const std::string one = to_string(u"\n", encoder);
        const std::string two = to_string(u"\n\n", encoder);
        if (two.size() <= one.size() || two.compare(0, one.size(), one) != 0)
            return {};
        std::string pattern = two.substr(one.size());
        if (pattern.size() % align != 0)
            return {};
        return line_ends(std::move(pattern), align);
    } catch (const CvtExceptionBase&) {
        return {};  // "\n" has no form of its own here: the input is not cut
    }
}

// What every conversion into `encoding` writes before the first character: compare "a" with
// "aa". Empty for most encodings.
std::string find_per_call_prefix(const std::string& encoding)
{
    try {
        const codecvt_ustring_to_string encoder(encoding, true);
        const std::string a = to_string(u"a", encoder);
        const std::string aa = to_string(u"aa", encoder);
        if (aa.size() <= a.size() || aa.size() - a.size() > a.size())
            return {};
        const std::size_t prefix_length = a.size() - (aa.size() - a.size());
        const std::string prefix = a.substr(0, prefix_length);
        const std::string unit = a.substr(prefix_length);
        return aa == prefix + unit + unit ? prefix : std::string();
    } catch (const CvtExceptionBase&) {
        return {};
    }
}

std::string describe(const CvtExceptionBase& e)
{
    switch (e.get_id()) {
    case cvt_invalid_character:
        return "invalid or unmappable character sequence";
    case cvt_conversion_failure:
        return "incomplete or unconvertible character sequence";
    default:
        return e.what();
    }
}

}  // namespace

output_sink::output_sink(std::FILE* out, std::string per_call_prefix)
    : out_(out), prefix_(std::move(per_call_prefix))
{
}

void output_sink::write(const std::string& bytes)
{
    if (bytes.empty())
        return;
    std::size_t skip = 0;
    if (started_ && !prefix_.empty() && bytes.compare(0, prefix_.size(), prefix_) == 0)
        skip = prefix_.size();
    started_ = true;
    const std::size_t length = bytes.size() - skip;
    if (std::fwrite(bytes.data() + skip, 1, length, out_) != length)
        throw io_error(std::string("write error on standard output: ") + std::strerror(errno));
}

transcoder::transcoder(const convert_settings& settings, std::FILE* out)
    : settings_(settings)
{
    from_traits_ = probe_encoding(settings_.from);
    to_stateful_ = probe_encoding(settings_.to).stateful;
    // An unknown encoding fails here, before any input is read.
    input(settings_.from);
    output_ = std::make_unique<codecvt_ustring_to_string>(settings_.mode, settings_.to, "");
    sink_ = std::make_unique<output_sink>(out, find_per_call_prefix(settings_.to));
}

transcoder::~transcoder() = default;

const transcoder::input_side& transcoder::input(const std::string& encoding)
{
    auto& slot = inputs_[encoding];
    if (!slot) {
        const auto mode = settings_.mode == cvt_call_back_stop ? cvt_call_back_stop : cvt_call_back_default;
        codecvt_string_to_ustring converter(mode, encoding);
        const encoding_traits traits = probe_encoding(encoding);
        line_ends ends = find_line_ends(encoding, traits.min_char_size);
        const bool whole = traits.stateful || to_stateful_ || !ends.known();
        slot.reset(new input_side{std::move(converter), std::move(ends), whole});
    }
    return *slot;
}

std::string transcoder::convert(const input_side& side, const char* data, std::size_t size) const
{
    if (size == 0)
        return {};
    return to_string(side.converter.convert(data, size), *output_);
}

bool transcoder::run(std::FILE* in, const std::string& name)
{
    piece_reader reader(in, name, settings_.piece_size);
    std::string encoding = settings_.from;
    if (const std::size_t width = from_traits_.byte_order_mark_width; width != 0) {
        // Each call of the library's converter starts afresh, so only the first piece could
        // carry the mark: read it once and go on with the byte order it names.
        std::size_t mark = 0;
        encoding = byte_order_encoding(width, reader.peek(width), mark);
        reader.drop(mark);
    }
    const input_side& side = input(encoding);
    static const line_ends uncut;
    std::size_t lines = 0;  // line ends before the current piece
    std::string piece;
    while (reader.next(piece, side.whole ? uncut : side.ends)) {
        std::string converted;
        try {
            converted = convert(side, piece.data(), piece.size());
        } catch (const CvtExceptionBase&) {
            report_failure(side, piece, lines, name);
            return false;
        }
        sink_->write(converted);
        if (!side.whole)
            lines += side.ends.count(piece.data(), piece.size());
    }
    return true;
}

void transcoder::report_failure(const input_side& side, const std::string& data,
                                std::size_t lines_before, const std::string& name)
{
    std::vector<std::size_t> cuts = side.ends.ends(data.data(), data.size());
    if (cuts.empty() || cuts.back() != data.size())
        cuts.push_back(data.size());
    // Bisect on whole lines from the start: the first `good` lines convert, the first `bad`
    // do not. Converting from the start keeps this right for stateful encodings too.
    std::size_t good = 0;
    std::size_t bad = cuts.size();
    std::string good_output;
    while (bad - good > 1) {
        const std::size_t mid = good + (bad - good) / 2;
        try {
            good_output = convert(side, data.data(), cuts[mid - 1]);
            good = mid;
        } catch (const CvtExceptionBase&) {
            bad = mid;
        }
    }
    sink_->write(good_output);

    std::string what = "invalid or unmappable character sequence";
    try {
        convert(side, data.data(), cuts[bad - 1]);
    } catch (const CvtExceptionBase& e) {
        what = describe(e);
    }
    if (side.ends.known())
        report(name + ":" + std::to_string(lines_before + bad) + ": " + what);
    else
        report(name + ": " + what);
}

}  // namespace qxi18n_tool
