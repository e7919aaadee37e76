// Unicode's NormalizationTest.txt through the four normalising transforms: every invariant of the
// file's header, for every line of Part 0 to Part 3 and for every code point Part 1 leaves out.
#include <fl/i18n/transform.hpp>

#include <gtest/gtest.h>
#include <unicode/uchar.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace {

struct pipe_closer {
    void operator()(std::FILE* f) const noexcept { pclose(f); }
};

// The file's lines, read plainly or through bzcat, which is how Debian ships it; empty if absent.
std::vector<std::string> read_test_file(std::string& command)
{
    const std::string plain = std::string(QXI18N_UNICODE_DATA_DIR) + "/NormalizationTest.txt";
    struct stat st {};
    if (::stat(plain.c_str(), &st) == 0)
        command = "cat '" + plain + "'";
    else if (::stat((plain + ".bz2").c_str(), &st) == 0)
        command = "bzcat '" + plain + ".bz2'";
    else
        return {};
    const std::unique_ptr<std::FILE, pipe_closer> pipe(popen(command.c_str(), "r"));
    std::vector<std::string> lines(1);
    for (int c; pipe && (c = std::fgetc(pipe.get())) != EOF;) {
        if (c == '\n')
            lines.emplace_back();
        else
            lines.back().push_back(static_cast<char>(c));
    }
    lines.pop_back();  // what follows the last line end: nothing in a well-formed file
    return lines;
}

void append_code_point(ustring& text, char32_t c)
{
    if (c >= 0x10000)
        text.push_back(static_cast<char16_t>(0xD7C0 + (c >> 10)));
    text.push_back(static_cast<char16_t>(c >= 0x10000 ? 0xDC00 | (c & 0x3FF) : c));
}

// NFC, NFD, NFKC and NFKD of a text, in that order.
std::array<ustring, 4> normalise(const ustring& text)
{
    using foundation::ustring::detail::do_transform_impl;
    return {do_transform_impl(text.data(), text.size(), fl::i18n::to_nfc()),
            do_transform_impl(text.data(), text.size(), fl::i18n::to_nfd()),
            do_transform_impl(text.data(), text.size(), fl::i18n::to_nfkc()),
            do_transform_impl(text.data(), text.size(), fl::i18n::to_nfkd())};
}

TEST(NormalizationConformance, every_invariant_of_the_unicode_test_file)
{
    std::string source;
    const std::vector<std::string> lines = read_test_file(source);
    if (lines.empty())
        GTEST_SKIP() << "NormalizationTest.txt(.bz2) not found or unreadable under " << QXI18N_UNICODE_DATA_DIR
                     << " (Debian package unicode-data)";
    // ICU drops a trailing ".0" from its version; the file names all three fields.
    UVersionInfo version;
    u_getUnicodeVersion(version);
    char icu_version[U_MAX_VERSION_STRING_LENGTH];
    u_versionToString(version, icu_version);
    if (lines.front().rfind("# NormalizationTest-" + std::string(icu_version) + ".", 0) != 0)
        GTEST_SKIP() << "the file is " << lines.front() << " but ICU implements Unicode " << icu_version;

    // Each line's columns c1 to c5 and, for each column's forms, the column each must equal.
    constexpr int nfc_of[5] = {1, 1, 1, 3, 3}, nfd_of[5] = {2, 2, 2, 4, 4};
    std::set<char32_t> part1;
    bool in_part1 = false;
    std::size_t checked = 0;
    for (std::size_t n = 0; n < lines.size(); ++n) {
        const std::string& line = lines[n];
        if (!line.empty() && line[0] == '@')
            in_part1 = line.rfind("@Part1", 0) == 0;
        if (line.empty() || line[0] == '#' || line[0] == '@')
            continue;
        std::array<ustring, 5> c;
        std::istringstream in(line);
        for (auto& column : c) {
            std::string field, hex;
            std::getline(in, field, ';');
            for (std::istringstream units(field); units >> hex;)
                append_code_point(column, static_cast<char32_t>(std::strtoul(hex.c_str(), nullptr, 16)));
        }
        if (in_part1)
            part1.insert(static_cast<char32_t>(std::strtoul(line.c_str(), nullptr, 16)));
        SCOPED_TRACE(testing::Message() << source << ", line " << n + 1 << ": " << line);
        for (int i = 0; i < 5; ++i) {
            const auto f = normalise(c[i]);
            ASSERT_TRUE(f[0] == c[nfc_of[i]] && f[1] == c[nfd_of[i]] && f[2] == c[3] && f[3] == c[4]) << "c" << i + 1;
        }
        ++checked;
    }
    EXPECT_GT(checked, 10000U);
    ASSERT_GT(part1.size(), 1000U);

    // Part 2 of the header: every other assigned code point is its own normal form.
    for (char32_t x = 0; x <= 0x10FFFF; ++x) {
        if (u_charType(static_cast<UChar32>(x)) == U_UNASSIGNED || part1.count(x) != 0)
            continue;
        ustring text;
        append_code_point(text, x);
        const auto f = normalise(text);
        ASSERT_TRUE(f[0] == text && f[1] == text && f[2] == text && f[3] == text)
            << "U+" << std::hex << static_cast<unsigned long>(x);
    }
}

}  // namespace
