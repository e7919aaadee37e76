// How often detect_charset names the right encoding: over the labelled corpus, and over our own
// sample texts encoded here into the legacy encodings. Prints a table per encoding; asserts only
// what holds by design, and a floor on the rest measured with ICU 72.
#include <fl/i18n/charset_detection.hpp>

#include "charset_test_support.hpp"
#include "conversion_test_support.hpp"

#include <cstdio>
#include <map>
#include <sstream>

namespace {

// Files and right answers (the detected name is the file's encoding or an alias of it) per
// encoding, printed as a table when the test ends.
class CharsetAccuracy : public ::testing::Test {
protected:
    // Detects `bytes`, checks what holds for every answer, and counts it under `encoding`.
    std::string count(const std::string& encoding, const std::string& bytes, const std::string& name)
    {
        std::ostringstream unused;
        const std::string detected = fl::i18n::detect_charset(bytes.data(), bytes.size(), unused, u"corpus");
        // Callers open a converter with the answer; the EBCDIC Arabic and Hebrew names are refused.
        const std::string canonical = qx_charset_test::icu_canonical_name(detected);
        EXPECT_FALSE(canonical.empty()) << name << ": " << detected;
        EXPECT_EQ(detected.rfind("IBM42", 0), std::string::npos) << name << ": " << detected;
        auto& [files, right] = table[encoding];
        ++files;
        right += !canonical.empty() && canonical == qx_charset_test::icu_canonical_name(encoding);
        return detected;
    }
    std::pair<int, int> totals() const
    {
        std::pair<int, int> all;
        for (const auto& [encoding, row] : table) all = {all.first + row.first, all.second + row.second};
        return all;
    }
    void TearDown() override
    {
        std::printf("\n%-20s %5s %5s\n", "encoding", "files", "right");
        for (const auto& [encoding, row] : table)
            std::printf("%-20s %5d %5d\n", encoding.c_str(), row.first, row.second);
        std::printf("%-20s %5d %5d\n", "all", totals().first, totals().second);
    }
    std::map<std::string, std::pair<int, int>> table;
};

TEST_F(CharsetAccuracy, LabelledCorpus)
{
    for (const auto& file : qx_charset_test::corpus()) {
        const std::string detected = count(file.encoding, file.bytes, file.name);
        // Valid UTF-8 and pure ASCII are settled by rule, never by the detector.
        if (file.encoding == "utf-8" || file.encoding == "ascii") {
            EXPECT_EQ(detected, "UTF-8") << file.name;
        }
    }
    EXPECT_EQ(totals().first, 116);
    EXPECT_GE(totals().second, 30) << "measured 32 with ICU 72";
}

TEST_F(CharsetAccuracy, OwnSamplesEncodedHere)
{
    const std::pair<const char*, std::vector<const char*>> samples[] = {
        {"french", {"windows-1252"}}, {"german", {"windows-1252"}},           {"polish", {"ISO-8859-2"}},
        {"czech", {"ISO-8859-2"}},    {"russian", {"windows-1251", "KOI8-R"}}, {"japanese", {"Shift_JIS", "EUC-JP"}},
        {"korean", {"EUC-KR"}},       {"chinese-simplified", {"GB18030"}},     {"chinese-traditional", {"Big5"}},
    };
    for (const auto& [language, encodings] : samples) {
        const std::string utf8 = qx_charset_test::read_data(std::string("samples/corpus/") + language + ".txt");
        const ustring text = qx_test::icu_utf8_to_utf16(utf8);
        EXPECT_EQ(count("UTF-8", utf8, language), "UTF-8") << language;
        // A byte order mark makes ICU certain.
        for (const char* utf16 : {"UTF-16LE", "UTF-16BE"})
            EXPECT_EQ(count(utf16, qx_test::icu_from_uchars(utf16, u"\uFEFF" + text), language), utf16) << language;
        for (const char* encoding : encodings) count(encoding, qx_test::icu_from_uchars(encoding, text), language);
    }
    EXPECT_EQ(totals().first, 3 * 9 + 11);
    EXPECT_GE(totals().second, 3 * 9 + 4) << "measured 32 with ICU 72";
}

}  // namespace
