// Tests of libqxfoundation_filesystem: path strings, name encoding and the installation root.
#include <fl/filesystem/foundation/install_path.hpp>
#include <fl/filesystem/foundation/pathname.hpp>
#include <fl/filesystem/foundation/pathname_encoding.hpp>

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <iconv.h>
#include <link.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>

namespace {

using fl::filesystem::ustring;
namespace detail = fl::filesystem::detail;
namespace stdfs = std::filesystem;

std::string utf8_of(const ustring& s)
{
    return fl::filesystem::pathname_traits<char16_t>::to_filesystem(s);
}

// ---------------------------------------------------------------------------------------------
// Path strings

TEST(ConcatenatePathname, JoinsWithExactlyOneSeparator)
{
    const struct {
        const char16_t* head;
        const char16_t* tail;
        const char16_t* expected;
    } cases[] = {
        {u"a", u"b", u"a/b"},         {u"a/", u"b", u"a/b"},      {u"a", u"/b", u"a/b"},
        {u"a//", u"//b", u"a/b"},     {u"/", u"bin", u"/bin"},    {u"/usr", u"bin/x", u"/usr/bin/x"},
        {u"a", u"/", u"a/"},          {u"/", u"/", u"/"},         {u"", u"b", u"b"},
        {u"a/", u"", u"a/"},          {u"", u"", u""},            {u"\u00E9", u"\u6F22", u"\u00E9/\u6F22"},
        {u"a/b/", u"c.xml", u"a/b/c.xml"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(detail::concatenate_pathname(c.head, c.tail), c.expected)
            << utf8_of(c.head) << " + " << utf8_of(c.tail);
    }
}

TEST(ExtractFilename, SplitsNameStemAndExtension)
{
    const struct {
        const char16_t* path;
        const char16_t* filename;
        const char16_t* stem;
        const char16_t* extension;
    } cases[] = {
        {u"/a/b/c.xml", u"c.xml", u"c", u".xml"},
        {u"c.tar.gz", u"c.tar.gz", u"c.tar", u".gz"},
        {u"dir.d/file", u"file", u"file", u""},
        {u"a/.profile", u".profile", u".profile", u""},
        {u"a/.profile.bak", u".profile.bak", u".profile", u".bak"},
        {u"a/name.", u"name.", u"name", u"."},
        {u"a/.", u".", u".", u""},
        {u"a/..", u"..", u"..", u""},
        {u"a/b/", u"", u"", u""},
        {u"/", u"", u"", u""},
        {u"", u"", u"", u""},
        {u"\u00E9t\u00E9.\u00FCml", u"\u00E9t\u00E9.\u00FCml", u"\u00E9t\u00E9", u".\u00FCml"},
    };
    for (const auto& c : cases) {
        const std::string where = utf8_of(c.path);
        EXPECT_EQ(detail::extract_filename(c.path), c.filename) << where;
        EXPECT_EQ(detail::extract_stem(c.path), c.stem) << where;
        EXPECT_EQ(detail::extract_extension(c.path), c.extension) << where;
    }
}

TEST(IsAbsolute, OnlyALeadingSeparatorCounts)
{
    const struct {
        const char16_t* path;
        bool absolute;
    } cases[] = {{u"/", true}, {u"/a", true}, {u"//a", true}, {u"a/b", false},
                 {u"./a", false}, {u"", false}, {u"~/a", false}};
    for (const auto& c : cases)
        EXPECT_EQ(detail::is_absolute(c.path), c.absolute) << utf8_of(c.path);
}

TEST(MakeNativeForm, CollapsesSeparatorsAndDotComponents)
{
    const struct {
        const char16_t* path;
        bool remove_dots;
        const char16_t* expected;
    } cases[] = {
        {u"a//b///c", true, u"a/b/c"},  {u"/a/b/", true, u"/a/b"},     {u"///", true, u"/"},
        {u"/", true, u"/"},             {u"./a/./b/.", true, u"a/b"},  {u".", true, u"."},
        {u"./", true, u"."},            {u"/./.", true, u"/"},         {u"a/../b", true, u"a/../b"},
        {u"a/.b/c.", true, u"a/.b/c."}, {u"", true, u""},              {u"", false, u""},
        {u"./a//b/", false, u"./a/b"},  {u"a/./b", false, u"a/./b"},   {u"//x", false, u"/x"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(detail::make_native_form(c.path, c.remove_dots), c.expected)
            << utf8_of(c.path) << " remove_dots=" << c.remove_dots;
    }
}

TEST(UpathConstant, SpellsTheSpecialComponents)
{
    EXPECT_EQ(ustring(fl::filesystem::upath_constant::PATHNAME_SEPARATOR), u"/");
    EXPECT_EQ(ustring(fl::filesystem::upath_constant::CURRENT_DIRECTORY), u".");
    EXPECT_EQ(ustring(fl::filesystem::upath_constant::PARENT_DIRECTORY), u"..");
}

// ---------------------------------------------------------------------------------------------
// Name encoding, checked against glibc's iconv as the reference

struct iconv_closer {
    void operator()(void* cd) const noexcept { iconv_close(static_cast<iconv_t>(cd)); }
};
using iconv_ptr = std::unique_ptr<void, iconv_closer>;

class reference_codec {
public:
    reference_codec(const char* to, const char* from) : cd_(iconv_open(to, from))
    {
        if (cd_.get() == reinterpret_cast<void*>(-1)) {
            cd_.release();
            throw std::runtime_error(std::string("iconv cannot convert ") + from + " to " + to);
        }
    }

    // The converted bytes, or nothing if the input is malformed or truncated.
    std::optional<std::string> convert(const std::string& input) const
    {
        iconv(static_cast<iconv_t>(cd_.get()), nullptr, nullptr, nullptr, nullptr);
        std::string out(input.size() * 4 + 16, '\0');
        char* in_ptr = const_cast<char*>(input.data());
        std::size_t in_left = input.size();
        char* out_ptr = out.data();
        std::size_t out_left = out.size();
        if (iconv(static_cast<iconv_t>(cd_.get()), &in_ptr, &in_left, &out_ptr, &out_left) ==
            static_cast<std::size_t>(-1))
            return std::nullopt;
        out.resize(out.size() - out_left);
        return out;
    }

private:
    iconv_ptr cd_;
};

ustring from_utf16le_bytes(const std::string& bytes)
{
    ustring out(bytes.size() / 2, u'\0');
    for (std::size_t i = 0; i < out.size(); ++i) {
        out[i] = static_cast<char16_t>(static_cast<unsigned char>(bytes[2 * i]) |
                                       (static_cast<unsigned char>(bytes[2 * i + 1]) << 8));
    }
    return out;
}

TEST(PathnameEncoding, EveryScalarValueMatchesIconv)
{
    std::string utf32le;
    for (char32_t cp = 0; cp <= 0x10FFFF; ++cp) {
        if (cp >= 0xD800 && cp <= 0xDFFF)
            continue;
        for (int shift = 0; shift < 32; shift += 8)
            utf32le += static_cast<char>((cp >> shift) & 0xFF);
    }
    const auto utf8 = reference_codec("UTF-8", "UTF-32LE").convert(utf32le);
    const auto utf16 = reference_codec("UTF-16LE", "UTF-32LE").convert(utf32le);
    ASSERT_TRUE(utf8 && utf16);
    const ustring units = from_utf16le_bytes(*utf16);
    EXPECT_TRUE(detail::from_filesystem(*utf8) == units);
    EXPECT_TRUE(utf8_of(units) == *utf8);
}

TEST(PathnameEncoding, RandomBytesAgreeWithIconv)
{
    const unsigned seed = 0x51B1;
    std::mt19937 rng(seed);
    // Bytes near every boundary of the decoder, so that most strings are nearly valid.
    const unsigned char alphabet[] = {0x00, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF,
                                      0xC0, 0xC1, 0xC2, 0xDF, 0xE0, 0xE1, 0xED, 0xEF, 0xF0,
                                      0xF3, 0xF4, 0xF5, 0xF8, 0xFE, 0xFF};
    std::uniform_int_distribution<std::size_t> pick(0, sizeof alphabet - 1);
    std::uniform_int_distribution<std::size_t> length(0, 9);
    const reference_codec reference("UTF-16LE", "UTF-8");
    for (int round = 0; round < 200000; ++round) {
        std::string bytes(length(rng), '\0');
        for (char& b : bytes)
            b = static_cast<char>(alphabet[pick(rng)]);
        const auto expected = reference.convert(bytes);
        std::optional<ustring> actual;
        try {
            actual = detail::from_filesystem(bytes);
        } catch (const std::invalid_argument&) {
        }
        ASSERT_EQ(actual.has_value(), expected.has_value()) << "seed " << seed << " round " << round;
        if (expected) {
            ASSERT_TRUE(*actual == from_utf16le_bytes(*expected)) << "seed " << seed << " round " << round;
        }
    }
}

TEST(FromFilesystem, RefusesMalformedBytesNamingTheOffset)
{
    const struct {
        std::string bytes;
        std::size_t offset;
    } cases[] = {
        {"\x80", 0},                    {"ab\x80", 2},                 {"a\xC3", 1},
        {"\xC0\x80", 0},                {"\xC1\xBF", 0},               {"\xE0\x80\x80", 0},
        {"\xE0\x9F\xBF", 0},            {"\xF0\x80\x80\x80", 0},       {"\xF0\x8F\xBF\xBF", 0},
        {"x\xED\xA0\x80", 1},           {"\xED\xBF\xBF", 0},           {"\xF4\x90\x80\x80", 0},
        {"\xF5\x80\x80\x80", 0},        {"\xFF", 0},                   {"\xE2\x82", 0},
        {"\xE2\x82" "a", 0},            {"\xC3\xA9\xC3", 2},           {"\xC3\xA9\x80\x80", 2},
        {std::string("a\0\xFE", 3), 2}, {"\xF0\x9F\x98\x80\xF0\x9F\x98", 4},
    };
    for (const auto& c : cases) {
        try {
            (void)detail::from_filesystem(c.bytes);
            ADD_FAILURE() << "no exception for offset " << c.offset;
        } catch (const std::invalid_argument& e) {
            EXPECT_NE(std::string(e.what()).find("byte offset " + std::to_string(c.offset)),
                      std::string::npos)
                << e.what();
        }
    }
}

TEST(FromFilesystem, DecodesEveryLengthAtItsBoundaries)
{
    const struct {
        std::string bytes;
        ustring units;
    } cases[] = {
        {"", u""},
        {std::string("\0", 1), ustring(1, u'\0')},
        {"\x7F", u"\x7F"},
        {"\xC2\x80", u"\u0080"},
        {"\xDF\xBF", u"\u07FF"},
        {"\xE0\xA0\x80", u"\u0800"},
        {"\xED\x9F\xBF", u"\uD7FF"},
        {"\xEE\x80\x80", u"\uE000"},
        {"\xEF\xBF\xBF", u"\uFFFF"},
        {"\xF0\x90\x80\x80", u"\U00010000"},
        {"\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
        {"a/\xC3\xA9t\xC3\xA9.txt", u"a/\u00E9t\u00E9.txt"},
    };
    for (const auto& c : cases) {
        EXPECT_TRUE(detail::from_filesystem(c.bytes) == c.units) << c.bytes;
        EXPECT_EQ(utf8_of(c.units), c.bytes);
    }
}

TEST(ToFilesystem, RefusesLoneSurrogatesNamingTheOffset)
{
    const struct {
        ustring units;
        std::size_t offset;
    } cases[] = {
        {ustring(1, char16_t(0xD800)), 0},
        {ustring(1, char16_t(0xDFFF)), 0},
        {u"ab" + ustring(1, char16_t(0xDBFF)), 2},
        {u"a" + ustring(1, char16_t(0xD800)) + u"b", 1},
        {ustring{char16_t(0xDC00), char16_t(0xD800)}, 0},
        {u"\U0001F600" + ustring(1, char16_t(0xDC00)), 2},
        {ustring{char16_t(0xD800), char16_t(0xD800), char16_t(0xDC00)}, 0},
    };
    for (const auto& c : cases) {
        try {
            (void)utf8_of(c.units);
            ADD_FAILURE() << "no exception for offset " << c.offset;
        } catch (const std::invalid_argument& e) {
            EXPECT_NE(std::string(e.what()).find("offset " + std::to_string(c.offset)), std::string::npos)
                << e.what();
        }
    }
}

// ---------------------------------------------------------------------------------------------
// Installation root

// The file mapped at `address` according to the kernel, independent of the dynamic linker.
std::string mapped_file(const void* address)
{
    std::ifstream maps("/proc/self/maps");
    const auto target = reinterpret_cast<std::uintptr_t>(address);
    std::string line;
    while (std::getline(maps, line)) {
        std::istringstream fields(line);
        std::string range, perms, offset, device, inode, path;
        fields >> range >> perms >> offset >> device >> inode;
        std::getline(fields >> std::ws, path);
        const std::size_t dash = range.find('-');
        const auto begin = std::stoull(range.substr(0, dash), nullptr, 16);
        const auto end = std::stoull(range.substr(dash + 1), nullptr, 16);
        if (target >= begin && target < end)
            return path;
    }
    return {};
}

std::string expected_root(const void* address)
{
    const std::string file = mapped_file(address);
    if (file.empty() || file.front() != '/')
        return {};
    return stdfs::canonical(file).parent_path().parent_path().string();
}

std::string build_dir()
{
    return stdfs::canonical(QXI18N_TEST_BINARY_DIR).string();
}

const int object_in_test_program = 0;

TEST(GetInstallPath, IsTheBuildTreeRoot)
{
    const ustring root = fl::filesystem::get_install_path();
    EXPECT_EQ(utf8_of(root), build_dir());
    EXPECT_TRUE(detail::is_absolute(root));
    EXPECT_EQ(detail::make_native_form(root, true), root) << "not in native form";
}

TEST(GetBasePath, FindsTheRootOfTheObjectHoldingAnAddress)
{
    const struct {
        const char* what;
        const void* address;
    } cases[] = {
        {"test program", &object_in_test_program},
        {"filesystem library", reinterpret_cast<const void*>(&detail::extract_filename)},
        {"C library", reinterpret_cast<const void*>(stdout)},
    };
    for (const auto& c : cases) {
        const std::string expected = expected_root(c.address);
        ASSERT_FALSE(expected.empty()) << c.what << " is not mapped from a file";
        EXPECT_EQ(utf8_of(detail::get_base_path(const_cast<void*>(c.address))), expected) << c.what;
    }
    EXPECT_EQ(expected_root(&object_in_test_program), build_dir());
}

struct scoped_fd {
    int fd = -1;
    ~scoped_fd()
    {
        if (fd >= 0)
            close(fd);
    }
};

// Runs `program` from "/" with argv[0] "probe" and gives its standard output, or nothing if it
// did not exit with status 0.
std::optional<std::string> run_with_bare_name(const char* program)
{
    int fds[2];
    if (pipe(fds) != 0)
        return std::nullopt;
    scoped_fd read_end{fds[0]};
    scoped_fd write_end{fds[1]};
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(write_end.fd, STDOUT_FILENO);
        char name[] = "probe";
        char* argv[] = {name, nullptr};
        if (chdir("/") == 0)
            execv(program, argv);
        _exit(127);
    }
    close(write_end.fd);
    write_end.fd = -1;
    std::string out;
    char buffer[512];
    ssize_t got = 0;
    while ((got = read(read_end.fd, buffer, sizeof buffer)) > 0)
        out.append(buffer, static_cast<std::size_t>(got));
    int status = 0;
    if (pid < 0 || waitpid(pid, &status, 0) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return std::nullopt;
    return out;
}

// Regression: for the main program the dynamic linker reports argv[0], which a bare name or a
// relative path makes useless once the working directory differs.
TEST(GetBasePath, FindsTheMainProgramWhateverItsArgv0)
{
    EXPECT_EQ(run_with_bare_name(QXI18N_BASE_PATH_PROBE), std::optional<std::string>(build_dir()));
}

struct munmap_closer {
    void operator()(void* page) const noexcept { munmap(page, 4096); }
};

TEST(GetBasePath, IsEmptyForAddressesInNoObject)
{
    void* raw = mmap(nullptr, 4096, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(raw, MAP_FAILED);
    const std::unique_ptr<void, munmap_closer> anonymous_page(raw);
    int on_stack = 0;
    const void* addresses[] = {nullptr, anonymous_page.get(), &on_stack, reinterpret_cast<void*>(0x10)};
    for (const void* address : addresses)
        EXPECT_TRUE(detail::get_base_path(const_cast<void*>(address)).empty()) << address;
}

struct dl_closer {
    void operator()(void* handle) const noexcept { dlclose(handle); }
};
// A directory made for one test and removed with everything in it afterwards.
struct scratch_directory {
    stdfs::path path;
    ~scratch_directory()
    {
        std::error_code ignored;
        stdfs::remove_all(path, ignored);
    }
};

// A relocated installation reached through a symbolic link: the root is the real prefix.
TEST(GetBasePath, FollowsARelocatedLibraryThroughLinks)
{
    std::string pattern = stdfs::path(QXI18N_TEST_BINARY_DIR) / "tests" / "siblings" / "relocated_XXXXXX";
    ASSERT_NE(mkdtemp(pattern.data()), nullptr) << pattern;
    const scratch_directory scratch{stdfs::canonical(pattern)};
    const stdfs::path prefix = scratch.path / "pr\xC3\xA9" "fix";
    stdfs::create_directories(prefix / "lib");
    stdfs::copy_file(QXFOUNDATION_FILESYSTEM_FILE, prefix / "lib" / "libqxfoundation_filesystem.so");
    stdfs::create_directory_symlink(prefix / "lib", scratch.path / "linked_lib");

    const std::string through_link = (scratch.path / "linked_lib" / "libqxfoundation_filesystem.so").string();
    const std::unique_ptr<void, dl_closer> handle(dlopen(through_link.c_str(), RTLD_NOW | RTLD_LOCAL));
    ASSERT_NE(handle.get(), nullptr) << dlerror();
    link_map* map = nullptr;
    ASSERT_EQ(dlinfo(handle.get(), RTLD_DI_LINKMAP, &map), 0) << dlerror();
    // The dynamic section lies inside the copy, which is a second, distinct load.
    EXPECT_EQ(utf8_of(detail::get_base_path(map->l_ld)), prefix.string());
    EXPECT_EQ(utf8_of(fl::filesystem::get_install_path()), build_dir());
}

}  // namespace
