// Registers every conversion benchmark: the library and its peers on the same input, side by side.
#include "conversion_benchmarks.hpp"

#include "peers.hpp"
#include "samples.hpp"

#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion.hpp>

#include <benchmark/benchmark.h>

#include <exception>
#include <string>

namespace qxbench {
namespace {

// Checks the implementation once on the input (a wrong answer must not be timed), then times it.
// Throughput counts the byte-encoded form of the text in both directions, so that the two
// directions of one text and size read on the same scale.
template <class In, class Out, class Convert>
void measure(benchmark::State& state, const sample& input, const In& source, const Out& expected,
             Convert& convert)
{
    if (convert(source) != expected) {
        state.SkipWithError("output differs from the expected text");
        return;
    }
    for (auto _ : state) {
        Out result = convert(source);
        benchmark::DoNotOptimize(result.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(input.bytes.size()));
}

// Registers "op/text/size/impl". `make` opens whatever the implementation keeps between calls
// and returns the conversion; it runs outside the timing loop.
template <bool ToUtf16, class Make>
void add(const char* op, const text_source& text, const size_step& size, const char* impl, Make make)
{
    const std::string name = std::string(op) + "/" + text.label + "/" + size.label + "/" + impl;
    benchmark::RegisterBenchmark(name.c_str(), [&text, size, make](benchmark::State& state) {
        try {
            const sample& input = sample_for(text, size.bytes);
            auto convert = make(text);
            if constexpr (ToUtf16)
                measure(state, input, input.bytes, input.units, convert);
            else
                measure(state, input, input.units, input.bytes, convert);
        } catch (const std::exception& e) {
            state.SkipWithError(e.what());
        }
    });
}

const char* utf16() { return peer::iconv_codec::utf16_name(); }

void add_utf8_rows(const text_source& text, const size_step& size)
{
    constexpr const char* to = "utf8_to_ustring";
    add<true>(to, text, size, "qxi18n", [](const text_source&) {
        return [](const std::string& s) { return fl::i18n::utf8_to_ustring(s); };
    });
    add<true>(to, text, size, "icu", [](const text_source&) { return peer::icu_utf8_to_utf16; });
    add<true>(to, text, size, "iconv", [](const text_source&) {
        return [codec = peer::iconv_codec(utf16(), "UTF-8", 2)](const std::string& s) mutable {
            return codec.to_utf16(s);
        };
    });
    add<true>(to, text, size, "utf8cpp", [](const text_source&) { return peer::utf8cpp_utf8_to_utf16; });
}

void add_utf16_rows(const text_source& text, const size_step& size)
{
    constexpr const char* from = "ustring_to_utf8";
    add<false>(from, text, size, "qxi18n", [](const text_source&) {
        return [](const ustring& s) { return fl::i18n::ustring_to_utf8(s); };
    });
    add<false>(from, text, size, "icu", [](const text_source&) { return peer::icu_utf16_to_utf8; });
    add<false>(from, text, size, "iconv", [](const text_source&) {
        return [codec = peer::iconv_codec("UTF-8", utf16(), 3)](const ustring& s) mutable {
            return codec.from_utf16(s);
        };
    });
    add<false>(from, text, size, "utf8cpp", [](const text_source&) { return peer::utf8cpp_utf16_to_utf8; });
}

// The converters are built with substitution on, so that they and raw ICU run the same call-backs.
void add_codepage_to_rows(const text_source& text, const size_step& size)
{
    constexpr const char* to = "codecvt_string_to_ustring";
    add<true>(to, text, size, "qxi18n", [](const text_source& t) {
        return [cvt = fl::i18n::codecvt_string_to_ustring(t.icu_name, true)](const std::string& s) {
            return fl::i18n::to_ustring(s, cvt);
        };
    });
    add<true>(to, text, size, "icu", [](const text_source& t) {
        return [cnv = peer::icu_codepage(t.icu_name)](const std::string& s) { return cnv.to_utf16(s); };
    });
    add<true>(to, text, size, "iconv", [](const text_source& t) {
        return [codec = peer::iconv_codec(utf16(), t.iconv_name, 2)](const std::string& s) mutable {
            return codec.to_utf16(s);
        };
    });
}

void add_codepage_from_rows(const text_source& text, const size_step& size)
{
    constexpr const char* from = "codecvt_ustring_to_string";
    add<false>(from, text, size, "qxi18n", [](const text_source& t) {
        return [cvt = fl::i18n::codecvt_ustring_to_string(t.icu_name, true)](const ustring& s) {
            return fl::i18n::to_string(s, cvt);
        };
    });
    add<false>(from, text, size, "icu", [](const text_source& t) {
        return [cnv = peer::icu_codepage(t.icu_name)](const ustring& s) { return cnv.from_utf16(s); };
    });
    // One output byte per input byte is the worst case of both code pages (Shift_JIS: 2 per unit).
    add<false>(from, text, size, "iconv", [](const text_source& t) {
        return [codec = peer::iconv_codec(t.iconv_name, utf16(), 1)](const ustring& s) mutable {
            return codec.from_utf16(s);
        };
    });
}

}  // namespace

void register_conversion_benchmarks()
{
    // Each peer runs right after the library on the same input, so that a change of machine
    // load between the two stays small.
    for (const text_source& text : utf8_texts())
        for (const size_step& size : sizes)
            add_utf8_rows(text, size);
    for (const text_source& text : utf8_texts())
        for (const size_step& size : sizes)
            add_utf16_rows(text, size);
    for (const text_source& text : codepage_texts())
        for (const size_step& size : sizes)
            add_codepage_to_rows(text, size);
    for (const text_source& text : codepage_texts())
        for (const size_step& size : sizes)
            add_codepage_from_rows(text, size);
}

}  // namespace qxbench
