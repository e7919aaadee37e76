// Tests of upath_recursive_directory_iterator: order, links, vanished entries, errors, handles.
#include "directory_test_support.hpp"

#include <fl/filesystem/filesystem_error.hpp>
#include <fl/filesystem/foundation/filesystem_error.hpp>
#include <fl/filesystem/recursive_directory_iterator.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <vector>

namespace {

namespace fs = fl::filesystem;
using fl::ustring;
using fs::file_status;
using namespace qx_test;

class RecursiveDirectoryIterator : public directory_scratch_test {
protected:
    // Every entry reported, as a path relative to the root.
    std::vector<ustring> walk(fs::upath_recursive_directory_iterator it) const
    {
        std::vector<ustring> paths;
        const ustring prefix = u16at("");
        for (const fs::upath_recursive_directory_iterator end; it != end; ++it)
            paths.push_back(it->full_pathname().substr(prefix.size()));
        return paths;
    }
    std::vector<ustring> walk() const { return walk(fs::upath_recursive_directory_iterator(fs::upath(u16at("")))); }
};

ustring parent_of(const ustring& path)
{
    const auto slash = path.rfind(u'/');
    return slash == ustring::npos ? ustring() : path.substr(0, slash);
}

TEST_F(RecursiveDirectoryIterator, BreadthFirstWithLinksReportedNotEntered)
{
    for (const char* d : {"a", "c", "e", "a/a1", "a/a1/deep", "c/c1"})
        make_dir(at(d));
    for (const char* f : {"b", "a/a2", "c/c1/x", "a/a1/deep/leaf"})
        make_file(at(f));
    make_link("a", at("link_to_a"));
    make_link("loop", at("c/loop"));
    const std::vector<ustring> paths = walk();
    const std::vector<ustring> expected = {u"a", u"c", u"e", u"a/a1", u"a/a1/deep", u"c/c1", u"b", u"a/a2",
                                           u"c/c1/x", u"a/a1/deep/leaf", u"link_to_a", u"c/loop"};
    EXPECT_EQ(std::set<ustring>(paths.begin(), paths.end()), std::set<ustring>(expected.begin(), expected.end()));
    EXPECT_EQ(paths.size(), expected.size());
    // Each directory's entries come in one run, and the runs follow the order in which their
    // directories were reported (the root first), which makes the depth non-decreasing too.
    std::vector<ustring> run_order{u""};
    for (const ustring& p : paths)
        if (run_order.back() != parent_of(p))
            run_order.push_back(parent_of(p));
    const std::set<ustring> non_empty_directories = {u"a", u"c", u"a/a1", u"a/a1/deep", u"c/c1"};
    std::vector<ustring> directories{u""};
    for (const ustring& p : paths)
        if (non_empty_directories.count(p) != 0)
            directories.push_back(p);
    EXPECT_EQ(run_order, directories);
}

TEST_F(RecursiveDirectoryIterator, EmptyTreesAndTheEnd)
{
    const fs::upath_recursive_directory_iterator end;
    EXPECT_EQ(fs::upath_recursive_directory_iterator(fs::upath(u16at(""))), end);
    EXPECT_EQ(fs::upath_recursive_directory_iterator(ustring()), end);
    EXPECT_THROW(*end, fs::InvalidOperation);
    make_dir(at("empty"));
    fs::upath_recursive_directory_iterator it{u16at("")};
    ASSERT_NE(it, end);
    EXPECT_EQ(it->filename(), u"empty");
    const fs::upath_recursive_directory_iterator copy = it;
    EXPECT_EQ(copy, it);
    EXPECT_NE(fs::upath_recursive_directory_iterator(u16at("")), it);
    ++it;
    EXPECT_EQ(it, end);
    EXPECT_THROW(++it, fs::InvalidOperation);
    EXPECT_THROW(*it, fs::InvalidOperation);
}

TEST_F(RecursiveDirectoryIterator, StartIteratorWithDotEntriesDoesNotEnterThem)
{
    make_dir(at("sub"));
    make_file(at("sub/f"));
    const auto paths = walk(fs::upath_recursive_directory_iterator(fs::upath_directory_iterator(fs::upath(u16at("")), true)));
    EXPECT_EQ(std::multiset<ustring>(paths.begin(), paths.end()), (std::multiset<ustring>{u".", u"..", u"sub", u"sub/f"}));
}

TEST_F(RecursiveDirectoryIterator, EntriesThatVanishAreSkipped)
{
    make_dir(at("d"));
    for (const char* f : {"keep", "vanish", "d/vanish", "d/keep"})
        make_file(at(f));
    static std::string root_copy;
    root_copy = root;
    directory_calls_override guard;
    // The entry goes between readdir and the lstat that classifies it.
    fs::detail::directory_libc().readdir = [](DIR* d) {
        dirent* e = ::readdir(d);
        if (e != nullptr && std::string(e->d_name) == "vanish") {
            ::unlink((root_copy + "/vanish").c_str());
            ::unlink((root_copy + "/d/vanish").c_str());
        }
        return e;
    };
    const auto paths = walk();
    EXPECT_EQ(std::set<ustring>(paths.begin(), paths.end()), (std::set<ustring>{u"d", u"keep", u"d/keep"}));
}

TEST_F(RecursiveDirectoryIterator, OneDirectoryHandleAtATime)
{
    for (const char* d : {"a", "b", "a/x", "a/x/y", "b/z"})
        make_dir(at(d));
    make_file(at("a/x/y/f"));
    const int before = open_descriptors();
    int most = 0;
    for (fs::upath_recursive_directory_iterator it{u16at("")}, end; it != end; ++it)
        most = std::max(most, open_descriptors());
    EXPECT_EQ(most, before + 1);
    {
        fs::upath_recursive_directory_iterator it{u16at("")};
        ++it;
        ++it;
    }
    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(RecursiveDirectoryIterator, UnreadableSubdirectoryStopsTheWalkWhereItIsOpened)
{
    if (const char* child = std::getenv("QXI18N_DIRECTORY_CHILD")) {
        const int before = open_descriptors();
        fs::upath_recursive_directory_iterator it{fs::detail::from_filesystem_bytes(child)};
        const fs::upath_recursive_directory_iterator end;
        std::vector<ustring> names;
        bool denied = false;
        while (it != end) {
            try {
                names.push_back(it->filename());
                ++it;
            } catch (const fs::AccessDenied& e) {
                EXPECT_EQ(e.get_path(), fs::detail::from_filesystem_bytes(std::string(child) + "/locked"));
                denied = true;
                if (it != end)
                    ++it;  // the locked directory is no longer pending: the walk goes on
            }
        }
        EXPECT_TRUE(denied);
        std::sort(names.begin(), names.end());
        EXPECT_EQ(names, (std::vector<ustring>{u"f", u"locked", u"open"}));
        EXPECT_EQ(open_descriptors(), before);
        return;
    }
    if (!can_drop_privileges())
        GTEST_SKIP() << "running as root and setpriv is missing: cannot drop to an unprivileged user";
    ASSERT_EQ(::chmod(root.c_str(), 0755), 0);
    ASSERT_EQ(::mkdir(at("locked").c_str(), 0), 0);
    make_dir(at("open"));
    make_file(at("open/f"));
    std::string log;
    EXPECT_TRUE(run_unprivileged("RecursiveDirectoryIterator.UnreadableSubdirectoryStopsTheWalkWhereItIsOpened", root, log))
        << log;
}

}  // namespace
