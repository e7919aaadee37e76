// Tests of upath_directory_iterator and upath_directory_entry on real directories.
#include "filesystem_test_support.hpp"

#include "filesystem/directory_internal.hpp"

#include <fl/filesystem/directory_iterator.hpp>
#include <fl/filesystem/foundation/file_status.hpp>

#include <boost/date_time/posix_time/conversion.hpp>
#include <gtest/gtest.h>

#include <fcntl.h>

#include <cerrno>
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

// A pattern made by hand, to hand the iterator one that the wildcard rules would not make.
struct raw_pattern : fs::pattern_string_context {
    raw_pattern(const ustring& name, const ustring& pattern) : pattern_string_context(name, pattern) {}
};

TEST(GeneratePatternFromFilename, WildcardDialect)
{
    const std::pair<ustring, ustring> cases[] = {
        {u"*.txt", u"^(.|\r)*\\.txt$"}, {u"a**b", u"^a(.|\r)*b$"}, {u"a?b", u"^a\\?b$"}, {u"a]b", u"^a]b$"},
        {u".", u"^.*$"}, {u"..", u"^.*$"}, {u"...", u"^\\.\\.\\.$"}, {u"", u""},
        {u"$()+.[\\^{|}", u"^\\$\\(\\)\\+\\.\\[\\\\\\^\\{\\|\\}$"}, {u"caf\u00E9*", u"^caf\u00E9(.|\r)*$"},
    };
    for (const auto& [name, pattern] : cases)
        EXPECT_EQ(fs::detail::generate_pattern_from_filename(name, fs::tolven_pattern_string_generator()), pattern);
    EXPECT_EQ(fs::wildcard_pattern_string_context(u"*.txt").pattern(), u"^(.|\r)*\\.txt$");
}

class DirectoryIterator : public scratch_test {
protected:
    fs::upath dir() const { return fs::upath(u16at("")); }
};

// Names at the inline buffer's edge, bytes that are not UTF-8, and every kind of link; a target
// type of 0 stands for a status that throws (a link loop).
TEST_F(DirectoryIterator, ReportsEveryKindOfEntryWithItsTypes)
{
    const std::string long254(254, 'a'), long255(255, 'b');
    for (const std::string& name : {std::string("plain"), std::string("caf\xC3\xA9"), std::string("\xFF\xFE"), long254, long255})
        make_file(at(name));
    make_dir(at("sub"));
    for (const auto& [target, link] : {std::pair{"plain", "to_file"}, {"sub", "to_dir"}, {"missing", "dangling"}, {"loop", "loop"}})
        make_link(target, at(link));
    const auto reg = file_status::regular_file, folder = file_status::directory_file, lnk = file_status::symlink_file;
    const std::map<std::string, std::pair<file_status::type_type, file_status::type_type>> expected = {
        {"plain", {reg, reg}},   {"caf\xC3\xA9", {reg, reg}}, {"\xFF\xFE", {reg, reg}},  {long254, {reg, reg}},
        {long255, {reg, reg}},   {"sub", {folder, folder}},   {"to_file", {lnk, reg}}, {"to_dir", {lnk, folder}},
        {"dangling", {lnk, file_status::file_not_found}},    {"loop", {lnk, 0}},
    };
    std::set<std::string> seen;
    for (fs::upath_directory_iterator it(dir()), end; it != end; ++it) {
        const std::string bytes = it->record().name_bytes();
        SCOPED_TRACE(bytes);
        ASSERT_TRUE(expected.count(bytes) == 1 && seen.insert(bytes).second);
        EXPECT_EQ(it->filename(), *icu_convert<char16_t>("UTF-8", bytes, false));
        EXPECT_EQ(it->record().long_name != nullptr, bytes.size() > 254);
        EXPECT_EQ(it->pathname(), fs::detail::from_filesystem_bytes(root));
        EXPECT_EQ(it->full_pathname(), u16at(bytes));
        const auto [type, target] = expected.at(bytes);
        EXPECT_EQ(std::make_pair(it->type(), it->symlink_status().type()), std::make_pair(type, type));
        if (target != 0) {
            EXPECT_EQ(std::make_pair(it->target_type(), it->status().type()), std::make_pair(target, target));
        } else {
            EXPECT_THROW(it->target_type(), fs::SystemError);
            EXPECT_THROW(it->status(), fs::SystemError);
        }
    }
    EXPECT_EQ(seen.size(), expected.size());
}

TEST_F(DirectoryIterator, StatusTimesKeepTheModificationFractionInTheChangeTime)
{
    make_file(at("f"));
    const timespec times[2] = {{1000000000, 111111111}, {1200000000, 987654321}};
    struct stat raw {};
    ASSERT_TRUE(::utimensat(AT_FDCWD, at("f").c_str(), times, 0) == 0 && ::stat(at("f").c_str(), &raw) == 0);
    const file_status s = fs::upath_directory_iterator(dir())->status();
    using boost::posix_time::from_time_t;
    using boost::posix_time::microseconds;
    EXPECT_EQ(s.access_time(), from_time_t(1000000000) + microseconds(111111));
    EXPECT_EQ(s.last_write_time(), from_time_t(1200000000) + microseconds(987654));
    EXPECT_EQ(s.change_time(), from_time_t(raw.st_ctim.tv_sec) + microseconds(987654));
    EXPECT_EQ(std::make_pair(s.size(), s.permissions()), std::make_pair(std::uintmax_t(1), raw.st_mode & 0xFFFU));
}

// Only "." and ".." are dot entries, not names that start like them.
TEST_F(DirectoryIterator, DotEntriesOnlyWhenAsked)
{
    EXPECT_EQ(fs::upath_directory_iterator(dir()), fs::upath_directory_iterator());
    EXPECT_EQ(fs::upath_directory_iterator(fs::upath()), fs::upath_directory_iterator());
    for (const char* name : {".x", "..x", "..."})
        make_file(at(name));
    const std::set<ustring> others{u".x", u"..x", u"..."}, all{u".", u"..", u".x", u"..x", u"..."};
    EXPECT_EQ(names_of(fs::upath_directory_iterator(dir())), others);
    EXPECT_EQ(names_of(fs::upath_directory_iterator(dir(), true)), all);
    fs::upath_directory_iterator it;
    it.reset_iterator(u16at(""), fs::default_initialization, true);
    EXPECT_EQ(names_of(it), all);
}

TEST_F(DirectoryIterator, WildcardFilter)
{
    const std::set<ustring> all{u"a.txt", u"b.txt", u"c.TXT", u"a?b", u"axb", u"x]y", u".hidden.txt", u"line\nbreak.txt"};
    for (const ustring& name : all)
        make_file(fs::detail::to_filesystem_bytes(u16at("") + u"/" + name));
    const std::pair<ustring, std::set<ustring>> cases[] = {
        {u"*.txt", {u"a.txt", u"b.txt", u".hidden.txt", u"line\nbreak.txt"}},
        {u"a?b", {u"a?b"}}, {u"*]*", {u"x]y"}}, {u"A.TXT", {}}, {u"*", all},
    };
    for (const auto& [wildcard, names] : cases)
        EXPECT_EQ(names_of(fs::upath_directory_iterator(dir(), fs::wildcard_pattern_string_context(wildcard))), names);
    const fs::wildcard_pattern_string_context dot(u".");
    EXPECT_EQ(names_of(fs::upath_directory_iterator(dir(), dot, false, true)).size(), all.size() + 2);
}

// Opens an iterator over `where`, for the checks of what that throws.
void open_iterator(const fs::upath& where, const fs::pattern_string_context& pattern)
{
    fs::upath_directory_iterator it(where, pattern);
}

TEST_F(DirectoryIterator, RefusedPatternsAndOpenFailures)
{
    make_file(at("file"));
    const fs::upath missing(u16at("missing"));
    // Refused before the directory is opened, so a missing one makes no difference.
    const std::pair<raw_pattern, const char*> refused[] = {
        {{u"", u"^a$"}, "Empty file name or pattern string context"},
        {{u"a", u""}, "Empty file name or pattern string context"},
        {{u"a/b", u"^a$"}, "Found invalid character in the file name"},
    };
    for (const auto& [pattern, message] : refused)
        for (const fs::upath& where : {dir(), missing})
            EXPECT_EQ(thrown_message([&] { open_iterator(where, pattern); }), message);
    const raw_pattern bad(u"(", u"(");
    EXPECT_EQ(thrown_message([&] { open_iterator(dir(), bad); }), "Pattern matching object can not be created");
    EXPECT_EQ(fs::upath_directory_iterator(dir(), bad, true), fs::upath_directory_iterator());

    EXPECT_EQ(thrown([&] { fs::upath_directory_iterator it{missing}; }), failure(fs::fsys_path_not_found, missing.string()));
    EXPECT_EQ(thrown([&] { fs::upath_directory_iterator it{fs::upath(u16at("file"))}; }),
              failure(fs::fsys_not_directory_error, u16at("file")));
    EXPECT_EQ(thrown([&] { open_iterator(missing, fs::wildcard_pattern_string_context(u"*.txt")); }),
              failure(fs::fsys_path_not_found, u16at("missing/*.txt")));
}

// A failed readdir names the last entry read; a failed closedir names nothing. Neither, nor any
// other failure, leaves a descriptor open; a copy shares its original's.
TEST_F(DirectoryIterator, ReadAndCloseFailuresLeakNoHandle)
{
    for (const char* name : {"f0", "f1", "f2"})
        make_file(at(name));
    const int before = open_descriptors();
    {
        fs::upath_directory_iterator it(dir()), copy = it;
        EXPECT_EQ(open_descriptors(), before + 1);
    }
    EXPECT_THROW(fs::upath_directory_iterator(dir(), raw_pattern(u"(", u"(")), fs::InvalidArgument);
    static int reads;
    static std::string last_name;
    reads = 0;
    fs::detail::libc().readdir = [](DIR* d) -> dirent* {
        if (++reads < 3) {
            dirent* e = ::readdir(d);
            last_name = e->d_name;
            return e;
        }
        errno = EIO;
        return nullptr;
    };
    const auto read_all = [this] {
        for (fs::upath_directory_iterator it{dir()}, end; it != end;)
            ++it;
    };
    const failure read_failure = thrown(read_all);
    EXPECT_EQ(read_failure, failure(fs::fsys_system_error, u16at(last_name)));
    fs::detail::libc() = real_libc;
    fs::detail::libc().closedir = [](DIR* d) {
        ::closedir(d);
        errno = EBADF;
        return -1;
    };
    EXPECT_EQ(thrown(read_all), failure(fs::fsys_system_error, u""));
    EXPECT_EQ(open_descriptors(), before);
}

// File systems that do not report d_type: type() asks lstat, and an entry removed since
// readdir reports file_not_found.
TEST_F(DirectoryIterator, WithoutDTypeTheTypeComesFromLstat)
{
    make_file(at("file"));
    make_link("file", at("link"));
    fs::detail::libc().readdir = [](DIR* d) {
        dirent* e = ::readdir(d);
        if (e != nullptr)
            e->d_type = DT_UNKNOWN;
        return e;
    };
    std::map<ustring, std::pair<file_status::type_type, file_status::type_type>> types;
    for (fs::upath_directory_iterator it{dir()}, end; it != end; ++it)
        types[it->filename()] = {it->type(), it->target_type()};
    EXPECT_EQ(types[u"file"], std::make_pair(file_status::regular_file, file_status::regular_file));
    EXPECT_EQ(types[u"link"], std::make_pair(file_status::symlink_file, file_status::regular_file));

    fs::upath_directory_iterator it{dir(), fs::wildcard_pattern_string_context(u"file")};
    ASSERT_NE(it, fs::upath_directory_iterator());
    ASSERT_EQ(::unlink(at("file").c_str()), 0);
    EXPECT_EQ(it->type(), file_status::file_not_found);
    EXPECT_EQ(it->target_type(), file_status::file_not_found);
    EXPECT_EQ(it->status().type(), file_status::file_not_found);
    EXPECT_EQ(it->symlink_status().permissions(), file_status::no_perms);
}

TEST_F(DirectoryIterator, UnreadableDirectoryIsAccessDenied)
{
    if (!child) {
        make_dir(at("locked"), 0);
        return run_as_nobody();
    }
    EXPECT_EQ(thrown([this] { fs::upath_directory_iterator it{fs::upath(u16at("locked"))}; }),
              failure(fs::fsys_access_denied, u16at("locked")));
}

}  // namespace
