// How often detect_charset names the right encoding: over the labelled corpus, and over our own
// sample texts encoded here into the legacy encodings. Prints a table per encoding; asserts only
// what holds by design, and a floor on the rest measured with ICU 72.
#include <fl/i18n/charset_detection.hpp>

#include "charset_test_support.hpp"

#include <cstdio>
#include <map>
#include <sstream>

namespace {

using qx_charset_test::same_encoding;

struct tally {
    int total = 0;
    int right = 0;  // the detected name is the file's encoding, or an alias of it
};

std::string encode(const std::string& encoding, const std::string& utf8)
{
    std::string out(utf8.size() * 4 + 16, '\0');
    UErrorCode status = U_ZERO_ERROR;
    const int32_t length = ucnv_convert(encoding.c_str(), "UTF-8", out.data(), static_cast<int32_t>(out.size()),
                                        utf8.data(), static_cast<int32_t>(utf8.size()), &status);
    EXPECT_TRUE(U_SUCCESS(status)) << encoding << ": " << u_errorName(status);
    out.resize(static_cast<std::size_t>(length));
    return out;
}

// Detects `bytes`, checks what holds for every answer, and counts it under `encoding`.
std::string count(std::map<std::string, tally>& table, const std::string& encoding, const std::string& bytes,
                  const std::string& name)
{
    std::ostringstream unused;
    const std::string detected = fl::i18n::detect_charset(bytes.data(), bytes.size(), unused, u"corpus");
    // Callers open a converter with the answer; the EBCDIC Arabic and Hebrew names are refused.
    EXPECT_FALSE(qx_charset_test::icu_canonical_name(detected).empty()) << name << ": " << detected;
    EXPECT_EQ(detected.rfind("IBM42", 0), std::string::npos) << name << ": " << detected;
    tally& row = table[encoding];
    ++row.total;
    row.right += same_encoding(detected, encoding);
    return detected;
}

tally print(const char* title, const std::map<std::string, tally>& table)
{
    tally sum;
    std::printf("\n%s\n%-20s %5s %5s\n", title, "encoding", "files", "right");
    for (const auto& [encoding, row] : table) {
        std::printf("%-20s %5d %5d\n", encoding.c_str(), row.total, row.right);
        sum.total += row.total;
        sum.right += row.right;
    }
    std::printf("%-20s %5d %5d\n", "all", sum.total, sum.right);
    return sum;
}

TEST(CharsetAccuracy, LabelledCorpus)
{
    std::map<std::string, tally> table;
    for (const auto& file : qx_charset_test::corpus()) {
        const std::string detected = count(table, file.encoding, file.bytes, file.name);
        // Valid UTF-8 and pure ASCII are settled by rule, never by the detector.
        if (file.encoding == "utf-8" || file.encoding == "ascii") {
            EXPECT_EQ(detected, "UTF-8") << file.name;
        }
    }
    const tally all = print("Labelled corpus: files, and those whose encoding was named right", table);
    EXPECT_EQ(all.total, 116);
    EXPECT_GE(all.right, 30) << "measured 32 with ICU 72";
}

TEST(CharsetAccuracy, OwnSamplesEncodedHere)
{
    const std::pair<const char*, std::vector<const char*>> samples[] = {
        {"french", {"windows-1252"}},
        {"german", {"windows-1252"}},
        {"polish", {"ISO-8859-2"}},
        {"czech", {"ISO-8859-2"}},
        {"russian", {"windows-1251", "KOI8-R"}},
        {"japanese", {"Shift_JIS", "EUC-JP"}},
        {"korean", {"EUC-KR"}},
        {"chinese-simplified", {"GB18030"}},
        {"chinese-traditional", {"Big5"}},
    };
    std::map<std::string, tally> table;
    for (const auto& [language, encodings] : samples) {
        const std::string utf8 =
            qx_charset_test::read_file(std::string(QXI18N_TEST_DATA_DIR) + "/samples/corpus/" + language + ".txt");
        EXPECT_EQ(count(table, "UTF-8", utf8, language), "UTF-8") << language;
        // A byte order mark makes ICU certain.
        EXPECT_EQ(count(table, "UTF-16LE", "\xFF\xFE" + encode("UTF-16LE", utf8), language), "UTF-16LE") << language;
        EXPECT_EQ(count(table, "UTF-16BE", "\xFE\xFF" + encode("UTF-16BE", utf8), language), "UTF-16BE") << language;
        for (const char* encoding : encodings)
            count(table, encoding, encode(encoding, utf8), language);
    }
    const tally all = print("Own samples: files, and those whose encoding was named right", table);
    EXPECT_EQ(all.total, 3 * 9 + 11);
    EXPECT_GE(all.right, 3 * 9 + 4) << "measured 32 with ICU 72";
}

}  // namespace
