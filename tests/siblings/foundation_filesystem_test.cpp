// Tests of libqxfoundation_filesystem: path strings, name encoding and the installation root.
#include <fl/filesystem/foundation/fstream.hpp>
#include <fl/filesystem/foundation/install_path.hpp>
#include <fl/filesystem/foundation/pathname.hpp>
#include <fl/filesystem/foundation/pathname_encoding.hpp>

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <iconv.h>
#include <link.h>
#include <sys/mman.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>

namespace {

using fl::filesystem::ustring;
namespace detail = fl::filesystem::detail;
namespace stdfs = std::filesystem;

std::string utf8_of(const ustring& s) { return fl::filesystem::pathname_traits<char16_t>::to_filesystem(s); }

// A fresh directory under the build tree, removed with everything in it.
std::shared_ptr<const stdfs::path> scratch_directory(const std::string& prefix)
{
    std::string pattern = (stdfs::path(QXI18N_TEST_BINARY_DIR) / "tests" / "siblings" / prefix).string() + std::string(6, 'X');
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("cannot make " + pattern);
    return {new stdfs::path(stdfs::canonical(pattern)), [](const stdfs::path* p) { stdfs::remove_all(*p); delete p; }};
}

// The UTF-16 operations, and the narrow ones on the UTF-8 bytes of the same paths.
TEST(PathStrings, JoinSplitAndNativeForm)
{
    using narrow = detail::path_traits<char, char>;
    const std::tuple<const char16_t*, const char16_t*, const char16_t*> joins[] = {
        {u"a", u"b", u"a/b"},   {u"a/", u"b", u"a/b"}, {u"a", u"/b", u"a/b"}, {u"a//", u"//b", u"a/b"},
        {u"/", u"bin", u"/bin"}, {u"a", u"/", u"a/"},  {u"/", u"/", u"/"},    {u"", u"b", u"b"},
        {u"a/", u"", u"a/"},     {u"", u"", u""},      {u"\u00E9", u"\u6F22", u"\u00E9/\u6F22"},
    };
    for (const auto& [head, tail, joined] : joins) {
        EXPECT_EQ(detail::concatenate_pathname(head, tail), joined) << utf8_of(head) << " + " << utf8_of(tail);
        EXPECT_EQ(narrow::concatenate_pathname(utf8_of(head), utf8_of(tail)), utf8_of(joined)) << utf8_of(head);
    }
    // path, filename, stem, extension
    const std::tuple<const char16_t*, const char16_t*, const char16_t*, const char16_t*> splits[] = {
        {u"/a/b/c.xml", u"c.xml", u"c", u".xml"},       {u"c.tar.gz", u"c.tar.gz", u"c.tar", u".gz"},
        {u"dir.d/file", u"file", u"file", u""},         {u"a/.profile", u".profile", u".profile", u""},
        {u"a/.profile.bak", u".profile.bak", u".profile", u".bak"}, {u"a/name.", u"name.", u"name", u"."},
        {u"a/.", u".", u".", u""}, {u"a/..", u"..", u"..", u""},    {u"a/b/", u"", u"", u""},
        {u"/", u"", u"", u""},     {u"", u"", u"", u""},
        {u"\u00E9t\u00E9.\u00FCml", u"\u00E9t\u00E9.\u00FCml", u"\u00E9t\u00E9", u".\u00FCml"},
    };
    for (const auto& [path, filename, stem, extension] : splits) {
        EXPECT_EQ(detail::extract_filename(path), filename) << utf8_of(path);
        EXPECT_EQ(detail::extract_stem(path), stem) << utf8_of(path);
        EXPECT_EQ(detail::extract_extension(path), extension) << utf8_of(path);
    }
    for (const auto& [path, absolute] : {std::pair{u"/", true}, {u"//a", true}, {u"a/b", false}, {u"", false}, {u"~/a", false}})
        EXPECT_EQ(detail::is_absolute(path), absolute) << utf8_of(path);
    const std::tuple<const char16_t*, bool, const char16_t*> native[] = {
        {u"a//b///c", true, u"a/b/c"},  {u"/a/b/", true, u"/a/b"},    {u"///", true, u"/"},      {u"/", true, u"/"},
        {u"./a/./b/.", true, u"a/b"},  {u".", true, u"."},           {u"./", true, u"."},       {u"/./.", true, u"/"},
        {u"a/../b", true, u"a/../b"}, {u"a/.b/c.", true, u"a/.b/c."}, {u"", true, u""},        {u"", false, u""},
        {u"./a//b/", false, u"./a/b"}, {u"a/./b", false, u"a/./b"},   {u"//x", false, u"/x"},
    };
    for (const auto& [path, remove_dots, expected] : native) {
        EXPECT_EQ(detail::make_native_form(path, remove_dots), expected) << utf8_of(path) << " remove_dots=" << remove_dots;
        EXPECT_EQ((detail::path_traits<char16_t, char16_t>::make_native_form(path, remove_dots)), expected);
        EXPECT_EQ(narrow::make_native_form(utf8_of(path), remove_dots), utf8_of(expected)) << utf8_of(path);
    }
    // Native names need not be UTF-8; bytes other than '/' and '.' pass through untouched.
    EXPECT_EQ(narrow::make_native_form("\xFF//./\xC3\x28/", true), "\xFF/\xC3\x28");
    EXPECT_EQ(narrow::make_native_form(std::string("a\0b//c", 6), false), std::string("a\0b/c", 5));
    EXPECT_EQ(narrow::concatenate_pathname("\x80/", "/\xFE"), "\x80/\xFE");
}

TEST(BasicIfstream, ReadsBytesAndReportsFailuresThroughTheStateBits)
{
    const auto scratch = scratch_directory("ifstream_");
    const std::string bytes("\xEF\xBB\xBFline\r\n\0\xFF", 11), file = (*scratch / "d\xC3\xA9j\xC3\xA0.bin").string();
    std::ofstream(file, std::ios_base::binary) << bytes;
    fl::filesystem::basic_ifstream<char> in(file, std::ios_base::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()), bytes);
    fl::filesystem::ifstream missing;
    missing.open((*scratch / "missing").string());
    EXPECT_TRUE(!missing.is_open() && missing.fail());
    missing.clear();
    missing.open(file.c_str());
    EXPECT_EQ(missing.get(), 0xEF);
}

// glibc's iconv is the reference codec: the converted bytes, or nothing if the input is malformed.
std::optional<std::string> iconv_convert(const char* to, const char* from, const std::string& input)
{
    const std::unique_ptr<void, int (*)(iconv_t)> cd(iconv_open(to, from), iconv_close);
    if (cd.get() == reinterpret_cast<void*>(-1)) throw std::runtime_error("iconv cannot convert " + std::string(from));
    std::string out(input.size() * 4 + 16, '\0');
    char* in_ptr = const_cast<char*>(input.data());
    char* out_ptr = out.data();
    std::size_t in_left = input.size(), out_left = out.size();
    if (iconv(cd.get(), &in_ptr, &in_left, &out_ptr, &out_left) == static_cast<std::size_t>(-1)) return std::nullopt;
    out.resize(out.size() - out_left);
    return out;
}

ustring from_utf16le(const std::string& bytes)
{
    ustring out;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
        out.push_back(static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) | static_cast<unsigned char>(bytes[i + 1]) << 8));
    return out;
}

// Scalar values on each side of every length and range boundary of UTF-8, both ways; then random
// bytes near every boundary of the decoder, so that most strings are nearly valid.
TEST(PathnameEncoding, AgreesWithIconv)
{
    std::string utf32le;
    for (char32_t centre : {0x0u, 0x80u, 0x800u, 0xD800u, 0xE000u, 0x10000u, 0x40000u, 0x100000u, 0x10FFFFu}) {
        for (char32_t cp = centre < 64 ? 0 : centre - 64; cp <= centre + 64 && cp <= 0x10FFFF; ++cp) {
            if (cp >= 0xD800 && cp <= 0xDFFF) continue;
            for (int shift = 0; shift < 32; shift += 8) utf32le += static_cast<char>((cp >> shift) & 0xFF);
        }
    }
    const auto utf8 = iconv_convert("UTF-8", "UTF-32LE", utf32le);
    const auto utf16 = iconv_convert("UTF-16LE", "UTF-32LE", utf32le);
    ASSERT_TRUE(utf8 && utf16);
    EXPECT_TRUE(detail::from_filesystem(*utf8) == from_utf16le(*utf16));
    EXPECT_TRUE(utf8_of(from_utf16le(*utf16)) == *utf8);

    const unsigned seed = 0x51B1;
    std::mt19937 rng(seed);
    const unsigned char alphabet[] = {0x00, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xC1, 0xC2,
                                      0xDF, 0xE0, 0xE1, 0xED, 0xEF, 0xF0, 0xF3, 0xF4, 0xF5, 0xF8, 0xFE, 0xFF};
    for (int round = 0; round < 200000; ++round) {
        std::string bytes(rng() % 10, '\0');
        for (char& b : bytes) b = static_cast<char>(alphabet[rng() % sizeof alphabet]);
        const auto expected = iconv_convert("UTF-16LE", "UTF-8", bytes);
        std::optional<ustring> actual;
        try {
            actual = detail::from_filesystem(bytes);
        } catch (const std::invalid_argument&) {
        }
        ASSERT_TRUE(expected ? actual == from_utf16le(*expected) : !actual) << "seed " << seed << " round " << round;
    }
}

// Malformed names in either direction are refused with the offset of the first bad unit.
TEST(PathnameEncoding, RefusesMalformedInputNamingTheOffset)
{
    const auto to = [](ustring units) { return [units] { (void)utf8_of(units); }; };
    const auto from = [](std::string bytes) { return [bytes] { (void)detail::from_filesystem(bytes); }; };
    const std::pair<std::function<void()>, std::size_t> cases[] = {
        {from("\x80"), 0},           {from("ab\x80"), 2},          {from("a\xC3"), 1},           {from("\xC0\x80"), 0},
        {from("\xC1\xBF"), 0},       {from("\xE0\x80\x80"), 0},    {from("\xE0\x9F\xBF"), 0},    {from("\xF0\x80\x80\x80"), 0},
        {from("\xF0\x8F\xBF\xBF"), 0}, {from("x\xED\xA0\x80"), 1}, {from("\xED\xBF\xBF"), 0},    {from("\xF4\x90\x80\x80"), 0},
        {from("\xF5\x80\x80\x80"), 0}, {from("\xFF"), 0},          {from("\xE2\x82"), 0},        {from("\xE2\x82" "a"), 0},
        {from("\xC3\xA9\xC3"), 2},   {from("\xC3\xA9\x80\x80"), 2}, {from(std::string("a\0\xFE", 3)), 2},
        {from("\xF0\x9F\x98\x80\xF0\x9F\x98"), 4},
        {to(u"\xD800"), 0}, {to(u"\xDFFF"), 0}, {to(u"ab\xDBFF"), 2}, {to(u"a\xD800" "b"), 1}, {to(u"\xDC00\xD800"), 0},
        {to(u"\U0001F600\xDC00"), 2}, {to(u"\xD800\xD800\xDC00"), 0},
    };
    for (const auto& [call, offset] : cases) {
        try {
            call();
            ADD_FAILURE() << "no exception for offset " << offset;
        } catch (const std::invalid_argument& e) {
            EXPECT_NE(std::string(e.what()).find("offset " + std::to_string(offset)), std::string::npos) << e.what();
        }
    }
}

// The root of the file the kernel maps at `address` (independent of the dynamic linker): the
// parent of the directory holding it.
std::string expected_root(const void* address)
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        unsigned long begin = 0, end = 0;
        const auto at = reinterpret_cast<unsigned long>(address);
        if (std::sscanf(line.c_str(), "%lx-%lx", &begin, &end) == 2 && at >= begin && at < end)
            return line.find('/') == std::string::npos ? "" : stdfs::canonical(line.substr(line.find('/'))).parent_path().parent_path().string();
    }
    return {};
}

const std::string build_dir = stdfs::canonical(QXI18N_TEST_BINARY_DIR).string();
const int object_in_test_program = 0;

// Nothing for addresses in no object: null, an anonymous page, the stack, the zero page.
TEST(GetBasePath, FindsTheRootOfTheObjectHoldingAnAddress)
{
    EXPECT_EQ(utf8_of(fl::filesystem::get_install_path()), build_dir);
    EXPECT_EQ(expected_root(&object_in_test_program), build_dir);
    for (const void* address : {static_cast<const void*>(&object_in_test_program),
                                reinterpret_cast<const void*>(&detail::extract_filename), static_cast<const void*>(stdout)}) {
        ASSERT_FALSE(expected_root(address).empty()) << address << " is not mapped from a file";
        EXPECT_EQ(utf8_of(detail::get_base_path(const_cast<void*>(address))), expected_root(address)) << address;
    }
    void* page = mmap(nullptr, 4096, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(page, MAP_FAILED);
    int on_stack = 0;
    for (const void* address : {static_cast<void*>(nullptr), page, static_cast<void*>(&on_stack), reinterpret_cast<void*>(0x10)})
        EXPECT_TRUE(detail::get_base_path(const_cast<void*>(address)).empty()) << address;
    munmap(page, 4096);
}

// Regression: for the main program the dynamic linker reports argv[0], which a bare name found
// in PATH makes useless once the working directory differs.
TEST(GetBasePath, FindsTheMainProgramWhateverItsArgv0)
{
    const stdfs::path probe(QXI18N_BASE_PATH_PROBE);
    const std::string command = "cd / && PATH='" + probe.parent_path().string() + "' " + probe.filename().string();
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    ASSERT_TRUE(pipe);
    std::string out;
    for (int c; (c = std::fgetc(pipe.get())) != EOF;) out.push_back(static_cast<char>(c));
    EXPECT_EQ(out, build_dir);
}

// A relocated installation reached through a symbolic link: the root is the real prefix.
TEST(GetBasePath, FollowsARelocatedLibraryThroughLinks)
{
    const auto scratch = scratch_directory("relocated_");
    const stdfs::path prefix = *scratch / "pr\xC3\xA9" "fix";
    stdfs::create_directories(prefix / "lib");
    stdfs::copy_file(QXFOUNDATION_FILESYSTEM_FILE, prefix / "lib" / "libqxfoundation_filesystem.so");
    stdfs::create_directory_symlink(prefix / "lib", *scratch / "linked_lib");
    const std::string through_link = (*scratch / "linked_lib" / "libqxfoundation_filesystem.so").string();
    const std::unique_ptr<void, int (*)(void*)> handle(dlopen(through_link.c_str(), RTLD_NOW | RTLD_LOCAL), dlclose);
    ASSERT_NE(handle.get(), nullptr) << dlerror();
    link_map* map = nullptr;
    ASSERT_EQ(dlinfo(handle.get(), RTLD_DI_LINKMAP, &map), 0) << dlerror();
    // The dynamic section lies inside the copy, which is a second, distinct load.
    EXPECT_EQ(utf8_of(detail::get_base_path(map->l_ld)), prefix.string());
}

}  // namespace
