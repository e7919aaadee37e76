// Streaming each input through the library's converters. In stop mode an unfinished line is held
// back until its end arrives, so that a failure leaves exactly the lines before it written.
#include "transcoder.hpp"

#include "cli.hpp"
#include "pieces.hpp"

#include <fl/i18n/conversion_error.hpp>
#include <fl/i18n/encoding_names.hpp>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace qxi18n_tool {

using namespace fl::i18n;

namespace {

// Units of converted text between the two converters. In stop mode an unfinished line waits here
// for its end; a line longer than this goes on in parts, so a failure in it may come after its
// beginning was written.
constexpr std::size_t stage_units = 512 * 1024;
constexpr std::size_t first_output_bytes = 64 * 1024;

template <class Unit>
std::size_t after_last_line_end(const Unit* units, std::size_t count)
{
    while (count > 0 && units[count - 1] != Unit('\n'))
        --count;
    return count;
}

template <class Unit>
std::size_t count_line_ends(const Unit* units, std::size_t count)
{
    return static_cast<std::size_t>(std::count(units, units + count, Unit('\n')));
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

transcoder::transcoder(const convert_settings& settings, std::FILE* out)
    : settings_(settings), out_(out), stop_(settings.mode == cvt_call_back_stop),
      // On a failure the multi-streaming converter drops what its pivot holds, so stop mode,
      // which writes every line before the failure, keeps the UTF-16 stage in its own hands.
      to_utf8_(!stop_ && get_standard_encoding_name(settings.to) == "UTF-8")
{
    // An unknown encoding fails here, before any input is read.
    if (settings_.from != detected_encoding)
        stream_codecvt_string_to_ustring(settings_.from, true);
    if (to_utf8_) {
        utf8_.reset(new char[stage_units]);
    } else {
        output_ = std::make_unique<stream_codecvt_ustring_to_string>(settings_.mode, settings_.to, "");
        units_.reset(new char16_t[stage_units]);
        bytes_.resize(first_output_bytes);
    }
}

transcoder::~transcoder() = default;

bool transcoder::run(std::FILE* in, const std::string& name)
{
    block_reader reader(in, name, settings_.block_size);
    std::string from = settings_.from;
    if (from == detected_encoding) {
        const std::string_view head = reader.peek(detection_bytes);
        from = detect_encoding(head, !reader.at_end(), name);
    }
    std::optional<failure> failed;
    if (to_utf8_) {
        // Lenient UTF-8 out needs no UTF-16 stage of ours: ICU pivots inside the converter, for
        // many encodings without UTF-16 at all.
        const stream_codecvt_string_to_utf8string converter(from, !stop_);
        failed = pump(converter, reader, utf8_.get(), [this](const char* bytes, std::size_t count, std::size_t) {
            write(bytes, count);
            return std::optional<failure>();
        });
    } else {
        const stream_codecvt_string_to_ustring converter(from, !stop_);
        failed = pump(converter, reader, units_.get(), [this](const char16_t* units, std::size_t count,
                                                              std::size_t lines) {
            return emit_units(units, count, lines);
        });
    }
    if (!failed)
        return true;
    report(name + (failed->line == 0 ? "" : ":" + std::to_string(failed->line)) + ": " + failed->what);
    return false;
}

// Converts all of one input into `stage` and hands the units on to `emit(units, count, lines
// before them)`: whole lines in stop mode, everything otherwise.
template <class Unit, class Converter, class Emit>
std::optional<transcoder::failure> transcoder::pump(const Converter& in, block_reader& reader, Unit* stage,
                                                    Emit emit)
{
    std::size_t held = 0;   // an unfinished line at the start of the stage
    std::size_t lines = 0;  // line ends handed on, counted in stop mode only
    for (bool last = false; !last;) {
        const std::string_view block = reader.next();
        last = block.empty();
        const char* next = block.data();
        for (bool more = true; more;) {
            Unit* target = stage + held;
            try {
                more = in.convert(&target, stage + stage_units, &next, block.data() + block.size(), last);
            } catch (const CvtExceptionBase& e) {
                // Everything before the bad sequence converted; its whole lines still go out.
                const auto produced = static_cast<std::size_t>(target - stage);
                const std::size_t line = stop_ ? lines + count_line_ends(stage, produced) + 1 : 0;
                if (std::optional<failure> earlier = emit(stage, after_last_line_end(stage, produced), lines))
                    return earlier;
                return failure{line, describe(e)};
            }
            const auto produced = static_cast<std::size_t>(target - stage);
            std::size_t ready = stop_ ? after_last_line_end(stage, produced) : produced;
            if (ready == 0 && more)
                ready = produced;  // the stage is full with a line longer than it
            if (std::optional<failure> failed = emit(stage, ready, lines))
                return failed;
            if (stop_)
                lines += count_line_ends(stage, ready);
            held = produced - ready;
            std::char_traits<Unit>::move(stage, stage + ready, held);
        }
    }
    return emit(stage, held, lines);
}

std::optional<transcoder::failure> transcoder::emit_units(const char16_t* units, std::size_t count,
                                                          std::size_t lines_before)
{
    if (count == 0)
        return std::nullopt;
    try {
        write(bytes_.data(), convert_units(units, count, false));
        return std::nullopt;
    } catch (const CvtExceptionBase& e) {
        if (!stop_)
            return failure{0, describe(e)};
    }
    // Nothing of these lines was written and the converter has been reset: once more line by
    // line, writing the good lines, to find the bad one.
    std::size_t line = lines_before;
    for (std::size_t begin = 0; begin < count; ++line) {
        const auto end = static_cast<std::size_t>(std::find(units + begin, units + count, u'\n') - units);
        const std::size_t length = std::min(end + 1, count) - begin;
        try {
            write(bytes_.data(), convert_units(units + begin, length, false));
        } catch (const CvtExceptionBase& e) {
            return failure{line + 1, describe(e)};
        }
        begin += length;
    }
    return std::nullopt;
}

// Converts `units` into bytes_, which grows until the output fits; returns the bytes written.
std::size_t transcoder::convert_units(const char16_t* units, std::size_t count, bool flush)
{
    const char16_t* next = units;
    std::size_t used = 0;
    for (;;) {
        char* target = bytes_.data() + used;
        const bool more = output_->convert(&target, bytes_.data() + bytes_.size(), &next, units + count, flush);
        used = static_cast<std::size_t>(target - bytes_.data());
        if (!more)
            return used;
        bytes_.resize(bytes_.size() * 2);
    }
}

bool transcoder::finish()
{
    if (!output_)
        return true;
    try {
        write(bytes_.data(), convert_units(u"", 0, true));
        return true;
    } catch (const CvtExceptionBase& e) {
        report("end of output: " + describe(e));
        return false;
    }
}

void transcoder::write(const char* bytes, std::size_t count)
{
    if (count != 0 && std::fwrite(bytes, 1, count, out_) != count)
        throw io_error(std::string("write error on standard output: ") + std::strerror(errno));
}

}  // namespace qxi18n_tool
