// Tests of upath_directory_iterator and upath_directory_entry on real directories.
#include "directory_test_support.hpp"

#include <fl/filesystem/directory_iterator.hpp>
#include <fl/filesystem/filesystem_error.hpp>
#include <fl/filesystem/foundation/file_status.hpp>

#include <boost/date_time/posix_time/conversion.hpp>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <map>
#include <set>

namespace {

namespace fs = fl::filesystem;
using fl::ustring;
using fs::file_status;
using namespace qx_test;

std::set<ustring> names_of(fs::upath_directory_iterator it)
{
    std::set<ustring> names;
    for (; it != fs::upath_directory_iterator(); ++it)
        EXPECT_TRUE(names.insert(it->filename()).second);
    return names;
}

// A pattern made by hand, to hand the iterator one that ICU refuses.
struct raw_pattern : fs::pattern_string_context {
    raw_pattern(const ustring& name, const ustring& pattern) : pattern_string_context(name, pattern) {}
};

TEST(GeneratePatternFromFilename, WildcardDialect)
{
    const struct {
        ustring name, pattern;
    } cases[] = {
        {u"*.txt", u"^(.|\r)*\\.txt$"}, {u"a**b", u"^a(.|\r)*b$"}, {u"***", u"^(.|\r)*$"},
        {u"a?b", u"^a\\?b$"},           {u"a]b", u"^a]b$"},          {u".", u"^.*$"},
        {u"..", u"^.*$"},               {u"", u""},                  {u"$()+.[\\^{|}", u"^\\$\\(\\)\\+\\.\\[\\\\\\^\\{\\|\\}$"},
        {u"caf\u00E9*", u"^caf\u00E9(.|\r)*$"}, {u"...", u"^\\.\\.\\.$"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(fs::detail::generate_pattern_from_filename(c.name, fs::tolven_pattern_string_generator()), c.pattern);
    EXPECT_EQ(fs::wildcard_pattern_string_context(u"*.txt").pattern(), u"^(.|\r)*\\.txt$");
}

class DirectoryIterator : public directory_scratch_test {};

TEST_F(DirectoryIterator, ReportsEveryKindOfEntryWithItsTypes)
{
    const std::string long254(254, 'a'), long255(255, 'b');
    make_file(at("plain"));
    make_file(at("caf\xC3\xA9"));
    make_file(at("\xFF\xFE"));
    make_file(at(long254));
    make_file(at(long255));
    make_dir(at("sub"));
    make_link("plain", at("to_file"));
    make_link("sub", at("to_dir"));
    make_link("missing", at("dangling"));
    make_link("loop", at("loop"));
    const auto reg = file_status::regular_file, dir = file_status::directory_file, lnk = file_status::symlink_file;
    const std::map<std::string, std::pair<file_status::type_type, file_status::type_type>> expected = {
        {"plain", {reg, reg}},   {"caf\xC3\xA9", {reg, reg}}, {"\xFF\xFE", {reg, reg}},
        {long254, {reg, reg}},   {long255, {reg, reg}},       {"sub", {dir, dir}},
        {"to_file", {lnk, reg}}, {"to_dir", {lnk, dir}},      {"dangling", {lnk, file_status::file_not_found}},
        {"loop", {lnk, 0}},
    };
    std::map<ustring, std::string> bytes_by_name;
    for (const auto& [bytes, types] : expected)
        bytes_by_name[*icu_to_unicode("UTF-8", bytes, false)] = bytes;

    std::set<std::string> seen;
    for (fs::upath_directory_iterator it(fs::upath(u16at(""))), end; it != end; ++it) {
        const auto found = bytes_by_name.find(it->filename());
        ASSERT_NE(found, bytes_by_name.end()) << it->record().name_bytes();
        const std::string& bytes = found->second;
        seen.insert(bytes);
        SCOPED_TRACE(bytes);
        EXPECT_STREQ(it->record().name_bytes(), bytes.c_str());
        EXPECT_EQ(it->record().long_name != nullptr, bytes.size() > 254);
        EXPECT_EQ(it->pathname(), u16at("").substr(0, u16at("").size() - 1));
        EXPECT_EQ(it->full_pathname(), u16at(bytes));
        EXPECT_TRUE(it->alternative_filename().empty());
        EXPECT_EQ(it->type(), expected.at(bytes).first);
        EXPECT_EQ(it->symlink_status().type(), expected.at(bytes).first);
        if (bytes == "loop") {
            EXPECT_THROW(it->target_type(), fs::SystemError);
            EXPECT_THROW(it->status(), fs::SystemError);
            continue;
        }
        EXPECT_EQ(it->target_type(), expected.at(bytes).second);
        EXPECT_EQ(it->target_type_without_validation(), expected.at(bytes).second);
        EXPECT_EQ(it->status().type(), expected.at(bytes).second);
    }
    EXPECT_EQ(seen.size(), expected.size());
}

TEST_F(DirectoryIterator, StatusTimesKeepTheModificationFractionInTheChangeTime)
{
    make_file(at("f"));
    const timespec times[2] = {{1000000000, 111111111}, {1200000000, 987654321}};
    ASSERT_EQ(::utimensat(AT_FDCWD, at("f").c_str(), times, 0), 0);
    struct stat raw {};
    ASSERT_EQ(::stat(at("f").c_str(), &raw), 0);
    const fs::upath_directory_iterator it{fs::upath(u16at(""))};
    ASSERT_NE(it, fs::upath_directory_iterator());
    const file_status s = it->status();
    using boost::posix_time::from_time_t;
    using boost::posix_time::microseconds;
    EXPECT_EQ(s.access_time(), from_time_t(1000000000) + microseconds(111111));
    EXPECT_EQ(s.last_write_time(), from_time_t(1200000000) + microseconds(987654));
    EXPECT_EQ(s.change_time(), from_time_t(raw.st_ctim.tv_sec) + microseconds(987654));
    EXPECT_EQ(s.size(), 1U);
    EXPECT_EQ(s.permissions(), raw.st_mode & 0xFFFU);
}

TEST_F(DirectoryIterator, DotEntriesOnlyWhenAsked)
{
    EXPECT_EQ(fs::upath_directory_iterator(fs::upath(u16at(""))), fs::upath_directory_iterator());
    EXPECT_EQ(names_of(fs::upath_directory_iterator(fs::upath(u16at("")), true)), (std::set<ustring>{u".", u".."}));
    EXPECT_EQ(fs::upath_directory_iterator(fs::upath()), fs::upath_directory_iterator());
    fs::upath_directory_iterator it;
    it.reset_iterator(u16at(""), fs::default_initialization, true);
    EXPECT_EQ(names_of(it), (std::set<ustring>{u".", u".."}));
    // Only the two names themselves are dot entries, not names that start like them.
    for (const char* name : {".x", "..x", "..."})
        make_file(at(name));
    const std::set<ustring> others{u".x", u"..x", u"..."};
    EXPECT_EQ(names_of(fs::upath_directory_iterator(fs::upath(u16at("")))), others);
    std::set<ustring> all = others;
    all.insert({u".", u".."});
    EXPECT_EQ(names_of(fs::upath_directory_iterator(fs::upath(u16at("")), true)), all);
}

TEST_F(DirectoryIterator, OpenFailuresNameThePath)
{
    make_file(at("file"));
    const ustring missing = u16at("missing"), file = u16at("file");
    EXPECT_EQ(thrown_path<fs::PathNotFound>([&] { fs::upath_directory_iterator it{fs::upath(missing)}; }), missing);
    EXPECT_EQ(thrown_path<fs::NotDirectoryError>([&] { fs::upath_directory_iterator it{fs::upath(file)}; }), file);
    EXPECT_EQ(thrown_path<fs::PathNotFound>([&] {
                  fs::upath_directory_iterator it(fs::upath(missing), fs::wildcard_pattern_string_context(u"*.txt"));
              }),
              missing + u"/*.txt");
}

TEST_F(DirectoryIterator, WildcardFilter)
{
    for (const char* name : {"a.txt", "b.txt", "c.TXT", "a?b", "axb", "x]y", ".hidden.txt", "line\nbreak.txt"})
        make_file(at(name));
    const struct {
        ustring wildcard;
        std::set<ustring> names;
    } cases[] = {
        {u"*.txt", {u"a.txt", u"b.txt", u".hidden.txt", u"line\nbreak.txt"}},
        {u"a?b", {u"a?b"}},
        {u"*]*", {u"x]y"}},
        {u"A.TXT", {}},
        {u"*", {u"a.txt", u"b.txt", u"c.TXT", u"a?b", u"axb", u"x]y", u".hidden.txt", u"line\nbreak.txt"}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(names_of(fs::upath_directory_iterator(fs::upath(u16at("")), fs::wildcard_pattern_string_context(c.wildcard))),
                  c.names);
    const auto with_dots = names_of(fs::upath_directory_iterator(fs::upath(u16at("")), fs::wildcard_pattern_string_context(u"."),
                                                                 false, true));
    EXPECT_EQ(with_dots.size(), 10U);
}

TEST_F(DirectoryIterator, PatternErrors)
{
    const fs::upath dir(u16at("")), missing(u16at("missing"));
    const struct {
        ustring name, pattern;
        const char* message;
    } refused[] = {
        {u"", u"^a$", "Empty file name or pattern string context"},
        {u"a", u"", "Empty file name or pattern string context"},
        {u"a/b", u"^a$", "Found invalid character in the file name"},
    };
    for (const auto& c : refused)
        for (const fs::upath* where : {&dir, &missing}) {
            try {
                fs::upath_directory_iterator it(*where, raw_pattern(c.name, c.pattern));
                ADD_FAILURE() << "no exception";
            } catch (const fs::InvalidArgument& e) {
                EXPECT_EQ(e.get_message(), c.message);
            }
        }
    make_file(at("("));
    try {
        fs::upath_directory_iterator it(dir, raw_pattern(u"(", u"("));
        ADD_FAILURE() << "no exception";
    } catch (const fs::InvalidArgument& e) {
        EXPECT_EQ(e.get_message(), "Pattern matching object can not be created");
    }
    EXPECT_EQ(fs::upath_directory_iterator(dir, raw_pattern(u"(", u"("), true), fs::upath_directory_iterator());
}

TEST_F(DirectoryIterator, NoDirectoryHandleLeaks)
{
    for (int i = 0; i < 20; ++i)
        make_file(at("f" + std::to_string(i)));
    const fs::upath dir(u16at(""));
    const int before = open_descriptors();
    EXPECT_EQ(names_of(fs::upath_directory_iterator(dir)).size(), 20U);
    {
        fs::upath_directory_iterator it(dir), copy = it;
        ++it;
        EXPECT_EQ(open_descriptors(), before + 1);
    }
    EXPECT_THROW(fs::upath_directory_iterator(dir, raw_pattern(u"(", u"(")), fs::InvalidArgument);
    EXPECT_THROW(fs::upath_directory_iterator(fs::upath(u16at("f1"))), fs::NotDirectoryError);
    {
        directory_calls_override guard;
        fs::detail::directory_libc().readdir = [](DIR*) -> dirent* {
            errno = EIO;
            return nullptr;
        };
        EXPECT_THROW(fs::upath_directory_iterator{dir}, fs::SystemError);
    }
    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(DirectoryIterator, ReadAndCloseFailures)
{
    make_file(at("only"));
    const int before = open_descriptors();
    {
        directory_calls_override guard;
        static int calls;
        static std::string last_name;
        calls = 0;
        fs::detail::directory_libc().readdir = [](DIR* d) -> dirent* {
            if (++calls < 3) {
                dirent* e = ::readdir(d);
                last_name = e->d_name;
                return e;
            }
            errno = EIO;
            return nullptr;
        };
        const ustring path = thrown_path<fs::SystemError>([&] {
            fs::upath_directory_iterator it{fs::upath(u16at(""))};
            ++it;
        });
        EXPECT_EQ(path, u16at(last_name));  // the last name read names the place
    }
    {
        directory_calls_override guard;
        fs::detail::directory_libc().closedir = [](DIR* d) {
            ::closedir(d);
            errno = EBADF;
            return -1;
        };
        fs::upath_directory_iterator it{fs::upath(u16at(""))};
        EXPECT_EQ(thrown_path<fs::SystemError>([&] { ++it; }), u"");
    }
    EXPECT_EQ(open_descriptors(), before);
}

// File systems that do not report d_type: type() asks lstat, and an entry removed since
// readdir reports file_not_found.
TEST_F(DirectoryIterator, WithoutDTypeTheTypeComesFromLstat)
{
    make_file(at("file"));
    make_link("file", at("link"));
    directory_calls_override guard;
    fs::detail::directory_libc().readdir = [](DIR* d) {
        dirent* e = ::readdir(d);
        if (e != nullptr)
            e->d_type = DT_UNKNOWN;
        return e;
    };
    std::map<ustring, std::pair<file_status::type_type, file_status::type_type>> types;
    for (fs::upath_directory_iterator it{fs::upath(u16at(""))}, end; it != end; ++it)
        types[it->filename()] = {it->type(), it->target_type()};
    EXPECT_EQ(types[u"file"], std::make_pair(file_status::regular_file, file_status::regular_file));
    EXPECT_EQ(types[u"link"], std::make_pair(file_status::symlink_file, file_status::regular_file));

    fs::upath_directory_iterator it{fs::upath(u16at("")), fs::wildcard_pattern_string_context(u"file")};
    ASSERT_NE(it, fs::upath_directory_iterator());
    ASSERT_EQ(::unlink(at("file").c_str()), 0);
    EXPECT_EQ(it->type(), file_status::file_not_found);
    EXPECT_EQ(it->target_type(), file_status::file_not_found);
    EXPECT_EQ(it->status().type(), file_status::file_not_found);
    EXPECT_EQ(it->symlink_status().permissions(), file_status::no_perms);
}

TEST_F(DirectoryIterator, UnreadableDirectoryIsAccessDenied)
{
    if (const char* child = std::getenv("QXI18N_DIRECTORY_CHILD")) {
        const ustring locked = fs::detail::from_filesystem_bytes(std::string(child) + "/locked");
        try {
            fs::upath_directory_iterator it{fs::upath(locked)};
            FAIL() << "no exception";
        } catch (const fs::AccessDenied& e) {
            EXPECT_EQ(e.get_path(), locked);
        }
        return;
    }
    if (!can_drop_privileges())
        GTEST_SKIP() << "running as root and setpriv is missing: cannot drop to an unprivileged user";
    ASSERT_EQ(::chmod(root.c_str(), 0755), 0);
    ASSERT_EQ(::mkdir(at("locked").c_str(), 0), 0);
    std::string log;
    EXPECT_TRUE(run_unprivileged("DirectoryIterator.UnreadableDirectoryIsAccessDenied", root, log)) << log;
}

}  // namespace
