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

using foundation::ustring::detail::do_transform_impl;

struct pipe_closer {
    void operator()(std::FILE* f) const noexcept { pclose(f); }
};
using pipe_ptr = std::unique_ptr<std::FILE, pipe_closer>;

bool exists(const std::string& path)
{
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0;
}

// The file's lines, read plainly or through bzcat, which is how Debian ships it; empty if absent.
std::vector<std::string> read_test_file(std::string& source)
{
    const std::string plain = std::string(QXI18N_UNICODE_DATA_DIR) + "/NormalizationTest.txt";
    const std::string packed = plain + ".bz2";
    std::string command;
    if (exists(plain))
        command = "cat '" + plain + "'";
    else if (exists(packed))
        command = "bzcat '" + packed + "'";
    else
        return {};
    source = command;
    pipe_ptr pipe(popen(command.c_str(), "r"));
    std::vector<std::string> lines;
    if (!pipe)
        return lines;
    std::string line;
    for (int c; (c = std::fgetc(pipe.get())) != EOF;) {
        if (c != '\n') {
            line.push_back(static_cast<char>(c));
            continue;
        }
        lines.push_back(line);
        line.clear();
    }
    return lines;
}

void append_code_point(ustring& text, char32_t c)
{
    if (c < 0x10000) {
        text.push_back(static_cast<char16_t>(c));
        return;
    }
    text.push_back(static_cast<char16_t>(0xD7C0 + (c >> 10)));
    text.push_back(static_cast<char16_t>(0xDC00 | (c & 0x3FF)));
}

ustring parse_column(const std::string& column)
{
    std::istringstream in(column);
    ustring text;
    for (std::string hex; in >> hex;)
        append_code_point(text, static_cast<char32_t>(std::strtoul(hex.c_str(), nullptr, 16)));
    return text;
}

struct forms {
    ustring nfc, nfd, nfkc, nfkd;
};

forms normalise(const ustring& text)
{
    return {do_transform_impl(text.data(), text.size(), fl::i18n::to_nfc()),
            do_transform_impl(text.data(), text.size(), fl::i18n::to_nfd()),
            do_transform_impl(text.data(), text.size(), fl::i18n::to_nfkc()),
            do_transform_impl(text.data(), text.size(), fl::i18n::to_nfkd())};
}

std::string unicode_version()
{
    UVersionInfo version;
    u_getUnicodeVersion(version);
    char text[U_MAX_VERSION_STRING_LENGTH];
    u_versionToString(version, text);
    return text;
}

TEST(NormalizationConformance, every_invariant_of_the_unicode_test_file)
{
    std::string source;
    const std::vector<std::string> lines = read_test_file(source);
    if (lines.empty())
        GTEST_SKIP() << "NormalizationTest.txt(.bz2) not found or unreadable under " << QXI18N_UNICODE_DATA_DIR
                     << " (Debian package unicode-data)";
    // ICU drops a trailing ".0" from its version; the file names all three fields.
    const std::string icu_version = unicode_version();
    if (lines.front().rfind("# NormalizationTest-" + icu_version + ".", 0) != 0)
        GTEST_SKIP() << "the file is " << lines.front() << " but ICU implements Unicode " << icu_version;

    std::set<char32_t> part1;
    bool in_part1 = false;
    std::size_t checked = 0;
    for (std::size_t n = 0; n < lines.size(); ++n) {
        const std::string& line = lines[n];
        if (line.empty() || line[0] == '#')
            continue;
        if (line[0] == '@') {
            in_part1 = line.compare(0, 6, "@Part1") == 0;
            continue;
        }
        std::array<ustring, 5> c;
        std::istringstream in(line);
        std::string column;
        for (auto& field : c) {
            std::getline(in, column, ';');
            field = parse_column(column);
        }
        if (in_part1)
            part1.insert(static_cast<char32_t>(std::strtoul(line.c_str(), nullptr, 16)));
        SCOPED_TRACE(testing::Message() << source << ", line " << n + 1 << ": " << line);
        const forms f1 = normalise(c[0]), f2 = normalise(c[1]), f3 = normalise(c[2]), f4 = normalise(c[3]),
                    f5 = normalise(c[4]);
        ASSERT_TRUE(c[1] == f1.nfc && c[1] == f2.nfc && c[1] == f3.nfc && c[3] == f4.nfc && c[3] == f5.nfc);
        ASSERT_TRUE(c[2] == f1.nfd && c[2] == f2.nfd && c[2] == f3.nfd && c[4] == f4.nfd && c[4] == f5.nfd);
        ASSERT_TRUE(c[3] == f1.nfkc && c[3] == f2.nfkc && c[3] == f3.nfkc && c[3] == f4.nfkc && c[3] == f5.nfkc);
        ASSERT_TRUE(c[4] == f1.nfkd && c[4] == f2.nfkd && c[4] == f3.nfkd && c[4] == f4.nfkd && c[4] == f5.nfkd);
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
        const forms f = normalise(text);
        ASSERT_TRUE(f.nfc == text && f.nfd == text && f.nfkc == text && f.nfkd == text)
            << "U+" << std::hex << static_cast<unsigned long>(x);
    }
}

}  // namespace
