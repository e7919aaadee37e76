// Tests of upath_recursive_directory_iterator: order, links, vanished entries, errors, handles.
#include "filesystem_test_support.hpp"

#include <fl/filesystem/foundation/filesystem_error.hpp>
#include <fl/filesystem/recursive_directory_iterator.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <vector>

namespace {

namespace fs = fl::filesystem;
using fl::ustring;
using namespace qx_test;

class RecursiveDirectoryIterator : public scratch_test {
protected:
    // Every entry reported, as a path relative to the root; most_descriptors counts those open
    // along the way.
    std::vector<ustring> walk(fs::upath_recursive_directory_iterator it)
    {
        std::vector<ustring> paths;
        for (const fs::upath_recursive_directory_iterator end; it != end; ++it) {
            paths.push_back(it->full_pathname().substr(u16at("").size()));
            most_descriptors = std::max(most_descriptors, open_descriptors());
        }
        return paths;
    }
    std::multiset<ustring> walk_set()
    {
        const std::vector<ustring> paths = walk(fs::upath_recursive_directory_iterator(u16at("")));
        return {paths.begin(), paths.end()};
    }
    int most_descriptors = 0;
};

ustring parent_of(const ustring& path)
{
    const auto slash = path.rfind(u'/');
    return slash == ustring::npos ? ustring() : path.substr(0, slash);
}

// Each directory's entries come in one run, and the runs follow the order in which their
// directories were reported, the root first. Links are reported, never entered. One directory
// is open at a time, and an iterator left early closes its own.
TEST_F(RecursiveDirectoryIterator, BreadthFirstWithLinksReportedNotEntered)
{
    for (const char* d : {"a", "c", "e", "a/a1", "a/a1/deep", "c/c1"})
        make_dir(at(d));
    for (const char* f : {"b", "a/a2", "c/c1/x", "a/a1/deep/leaf"})
        make_file(at(f));
    make_link("a", at("link_to_a"));
    make_link("loop", at("c/loop"));
    const int before = open_descriptors();
    const std::vector<ustring> paths = walk(fs::upath_recursive_directory_iterator(fs::upath(u16at(""))));
    EXPECT_EQ(most_descriptors, before + 1);
    {
        fs::upath_recursive_directory_iterator it{u16at("")};
        std::advance(it, 3);
    }
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(std::multiset<ustring>(paths.begin(), paths.end()),
              (std::multiset<ustring>{u"a", u"c", u"e", u"a/a1", u"a/a1/deep", u"c/c1", u"b", u"a/a2", u"c/c1/x",
                                      u"a/a1/deep/leaf", u"link_to_a", u"c/loop"}));
    std::vector<ustring> runs{u""}, non_empty_directories{u""};
    for (const ustring& p : paths) {
        if (runs.back() != parent_of(p))
            runs.push_back(parent_of(p));
        if (p == u"a" || p == u"c" || p == u"a/a1" || p == u"a/a1/deep" || p == u"c/c1")
            non_empty_directories.push_back(p);
    }
    EXPECT_EQ(runs, non_empty_directories);
}

// A start iterator that shows "." and ".." reports them without entering them.
TEST_F(RecursiveDirectoryIterator, EndsAndDotEntries)
{
    const fs::upath_recursive_directory_iterator end;
    EXPECT_EQ(fs::upath_recursive_directory_iterator(u16at("")), end);
    EXPECT_EQ(fs::upath_recursive_directory_iterator(ustring()), end);
    EXPECT_THROW(*end, fs::InvalidOperation);
    make_dir(at("sub"));
    fs::upath_recursive_directory_iterator it{u16at("")};
    ASSERT_NE(it, end);
    EXPECT_EQ(it->filename(), u"sub");
    EXPECT_EQ(fs::upath_recursive_directory_iterator(it), it);
    EXPECT_NE(fs::upath_recursive_directory_iterator(u16at("")), it);
    ++it;
    EXPECT_EQ(it, end);
    EXPECT_THROW(++it, fs::InvalidOperation);
    EXPECT_THROW(*it, fs::InvalidOperation);

    make_file(at("sub/f"));
    const auto paths = walk(fs::upath_recursive_directory_iterator(fs::upath_directory_iterator(fs::upath(u16at("")), true)));
    EXPECT_EQ(std::multiset<ustring>(paths.begin(), paths.end()), (std::multiset<ustring>{u".", u"..", u"sub", u"sub/f"}));
}

// An entry that goes between readdir and the lstat that classifies it is skipped.
TEST_F(RecursiveDirectoryIterator, EntriesThatVanishAreSkipped)
{
    make_dir(at("d"));
    for (const char* f : {"keep", "vanish", "d/vanish", "d/keep"})
        make_file(at(f));
    static std::string scratch;
    scratch = root;
    fs::detail::libc().readdir = [](DIR* d) {
        dirent* e = ::readdir(d);
        if (e != nullptr && std::string(e->d_name) == "vanish") {
            ::unlink((scratch + "/vanish").c_str());
            ::unlink((scratch + "/d/vanish").c_str());
        }
        return e;
    };
    EXPECT_EQ(walk_set(), (std::multiset<ustring>{u"d", u"keep", u"d/keep"}));
}

// The walk stops where the unreadable directory is opened, and goes on past it.
TEST_F(RecursiveDirectoryIterator, UnreadableSubdirectoryStopsTheWalkWhereItIsOpened)
{
    if (!child) {
        make_dir(at("locked"), 0);
        make_dir(at("open"));
        make_file(at("open/f"));
        return run_as_nobody();
    }
    const int before = open_descriptors();
    std::multiset<ustring> names;
    int denied = 0;
    for (fs::upath_recursive_directory_iterator it{u16at("")}, end; it != end;) {
        try {
            names.insert(it->filename());
            ++it;
        } catch (const fs::AccessDenied& e) {
            EXPECT_EQ(e.get_path(), u16at("locked"));
            ++denied;
            if (it != end)
                ++it;
        }
    }
    EXPECT_EQ(denied, 1);
    EXPECT_EQ(names, (std::multiset<ustring>{u"f", u"locked", u"open"}));
    EXPECT_EQ(open_descriptors(), before);
}

}  // namespace
