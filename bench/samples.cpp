// Builds the benchmark inputs with raw ICU, so that the library under test never makes its own input.
#include "samples.hpp"

#include <unicode/ucnv.h>
#include <unicode/ucnv_err.h>

#include <map>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

namespace qxbench {
namespace {

constexpr std::u16string_view ascii_sentence =
    u"Seven sailors counted ninety boats drifting past the old harbour lights at dawn. ";
constexpr std::u16string_view latin_sentence =
    u"L'été à Genève, les élèves goûtent des crêpes à la crème fraîche. "
    u"Im Frühling öffnen größere Läden früh, für Bücher und Käse. ";
constexpr std::u16string_view cjk_sentence =
    u"春の朝、私たちは駅の近くの小さな店で温かいお茶を飲みながら、新しい計画について話し合った。";

struct ucnv_closer {
    void operator()(UConverter* c) const noexcept { ucnv_close(c); }
};
using converter_ptr = std::unique_ptr<UConverter, ucnv_closer>;

void check(UErrorCode status, const char* what)
{
    if (U_FAILURE(status))
        throw std::runtime_error(std::string(what) + ": " + u_errorName(status));
}

// The byte form of each character of the sentence, refusing any it cannot map. The sentences
// stay in the BMP, so one UTF-16 unit is one character.
std::vector<std::string> encode_characters(const text_source& text)
{
    UErrorCode status = U_ZERO_ERROR;
    converter_ptr cnv(ucnv_open(text.icu_name, &status));
    check(status, text.icu_name);
    ucnv_setFromUCallBack(cnv.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    check(status, "ucnv_setFromUCallBack");

    std::vector<std::string> pieces;
    for (char16_t unit : text.sentence) {
        char buffer[8];
        const int32_t length = ucnv_fromUChars(cnv.get(), buffer, sizeof buffer, &unit, 1, &status);
        check(status, text.icu_name);
        pieces.emplace_back(buffer, static_cast<std::size_t>(length));
    }
    return pieces;
}

sample build(const text_source& text, std::size_t bytes)
{
    const std::vector<std::string> pieces = encode_characters(text);
    sample result;
    result.bytes.reserve(bytes);
    result.units.reserve(bytes);
    for (std::size_t i = 0;; i = (i + 1) % pieces.size()) {
        if (result.bytes.size() + pieces[i].size() > bytes)
            break;
        result.bytes += pieces[i];
        result.units += text.sentence[i];
    }
    return result;
}

}  // namespace

const std::array<text_source, 3>& utf8_texts()
{
    static const std::array<text_source, 3> texts{{
        {"ascii", "UTF-8", "UTF-8", ascii_sentence},
        {"latin", "UTF-8", "UTF-8", latin_sentence},
        {"cjk", "UTF-8", "UTF-8", cjk_sentence},
    }};
    return texts;
}

const std::array<text_source, 2>& codepage_texts()
{
    static const std::array<text_source, 2> texts{{
        {"windows-1252", "windows-1252", "WINDOWS-1252", latin_sentence},
        {"Shift_JIS", "Shift_JIS", "SHIFT_JIS", cjk_sentence},
    }};
    return texts;
}

const sample& sample_for(const text_source& text, std::size_t bytes)
{
    // Benchmarks run one at a time, so the cache needs no lock; the largest inputs are built
    // once instead of once per repetition.
    static std::map<std::pair<std::string, std::size_t>, sample> cache;
    auto key = std::make_pair(std::string(text.label), bytes);
    auto found = cache.find(key);
    if (found == cache.end())
        found = cache.emplace(std::move(key), build(text, bytes)).first;
    return found->second;
}

std::size_t size_of_label(std::string_view label)
{
    for (const size_step& step : sizes)
        if (label == step.label)
            return step.bytes;
    return 0;
}

}  // namespace qxbench
