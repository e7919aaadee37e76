// `qxi18n ls`, `qxi18n path` and `qxi18n tmp` end to end, on a scratch tree built here.
#include "cli_test_support.hpp"

#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <tuple>

namespace {

using namespace qx_cli_test;
using names = std::multiset<std::string>;

// tree/{.hidden, x.txt, y.md, link -> a, a/{y.txt, b/{z.txt}}}; x.txt has a known mode and times.
const std::string& tree()
{
    static const std::string root = [] {
        const std::string dir = scratch_dir() + "/tree";
        for (const std::string& d : {dir, dir + "/a", dir + "/a/b"}) EXPECT_EQ(::mkdir(d.c_str(), 0755), 0) << d;
        for (const char* file : {"/.hidden", "/x.txt", "/y.md", "/a/y.txt", "/a/b/z.txt"})
            scratch_file(std::string("tree") + file, "12345");
        EXPECT_EQ(::symlink("a", (dir + "/link").c_str()), 0);
        EXPECT_EQ(::chmod((dir + "/x.txt").c_str(), 0640), 0);
        const timeval times[2] = {{981173106, 789012}, {981173106, 789012}};  // 2001-02-03T04:05:06.789012
        EXPECT_EQ(::utimes((dir + "/x.txt").c_str(), times), 0);
        return dir;
    }();
    return root;
}

std::vector<std::string> lines_of(const std::string& out)
{
    std::vector<std::string> lines;
    std::istringstream in(out);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

// One level with filter and dots, and the tree breadth-first without following links: every
// entry of a level comes before any entry of the next.
TEST(CliFiles, ListsADirectoryOrTheWholeTree)
{
    const std::tuple<args, names> cases[] = {
        {{"ls", tree()}, {".hidden", "a", "link", "x.txt", "y.md"}},
        {{"ls", "-a", tree()}, {".", "..", ".hidden", "a", "link", "x.txt", "y.md"}},
        {{"ls", "--pattern", "*.txt", tree()}, {"x.txt"}},
        {{"ls", "--pattern=*", tree()}, {".hidden", "a", "link", "x.txt", "y.md"}},
        {{"ls", "--pattern", "X.TXT", tree()}, {}},  // case-sensitive
        {{"ls", "--pattern", "?.txt", tree()}, {}},  // "?" is no wildcard
        {{"ls", tree() + "/a/b"}, {"z.txt"}},
        {{"ls", "-r", tree()}, {".hidden", "a", "link", "x.txt", "y.md", "a/b", "a/y.txt", "a/b/z.txt"}},
        {{"ls", "-r", "--pattern", "*.txt", tree()}, {"x.txt", "a/y.txt", "a/b/z.txt"}},
        {{"ls", "-r", "-a", tree() + "/a"}, {".", "..", "b", "y.txt", "b/z.txt"}},
    };
    for (const auto& [call, expected] : cases) {
        const run_result r = run_tool(call);
        EXPECT_EQ(r.status, 0) << r.err;
        const std::vector<std::string> lines = lines_of(r.out);
        EXPECT_EQ(names(lines.begin(), lines.end()), expected) << call[1];
        std::vector<long> depths;
        for (const std::string& line : lines) depths.push_back(std::count(line.begin(), line.end(), '/'));
        EXPECT_TRUE(std::is_sorted(depths.begin(), depths.end())) << r.out;
    }
}

// A link shows its own status and the type of its target.
TEST(CliFiles, LongFormatShowsStatusAndLinkTargets)
{
    const run_result r = run_tool({"ls", "--long", tree()});
    ASSERT_EQ(r.status, 0) << r.err;
    std::map<std::string, std::vector<std::string>> rows;
    for (const std::string& line : lines_of(r.out)) {
        std::istringstream in(line);
        std::vector<std::string> fields;
        for (std::string field; in >> field;) fields.push_back(field);
        ASSERT_GE(fields.size(), 7u) << line;
        rows[fields[6]] = fields;
    }
    const std::vector<std::string> file = rows["x.txt"], link = rows["link"];
    EXPECT_EQ(file, (std::vector<std::string>{"regular", "rw-r-----", "5", "2001-02-03T04:05:06.789012",
                                              "2001-02-03T04:05:06.789012", file.at(5), "x.txt"}));
    EXPECT_EQ(rows["a"].at(0), "directory");
    EXPECT_EQ(rows["a"].at(1), "rwxr-xr-x");
    EXPECT_EQ(link, (std::vector<std::string>{"symlink", "rwxrwxrwx", "1", link.at(3), link.at(4), link.at(5), "link", "->",
                                              "directory"}));
}

TEST(CliFiles, FailedDirectoryIsReportedAndTheNextStillListed)
{
    const std::string missing = scratch_dir() + "/no-such-dir", file = tree() + "/x.txt";
    const run_result r = run_tool({"ls", missing, file, tree() + "/a/b"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "qxi18n: ls: fl:filesystem:PathNotFound: " + missing + "\nqxi18n: ls: fl:filesystem:NotDirectoryError: "
                         + file + "\n");
    EXPECT_EQ(r.out, missing + ":\n\n" + file + ":\n\n" + tree() + "/a/b:\nz.txt\n");
}

TEST(CliFiles, PathCompareAndValidate)
{
    const std::string component(256, 'c'), prefix = "qxi18n: path: ";
    // call, status, standard output, first line of standard error
    const std::tuple<args, int, std::string, std::string> cases[] = {
        {{"path", "compare", "/a", "/b"}, 0, "less\n", ""},
        {{"path", "compare", "/a//b/.", "/a/b"}, 0, "equal\n", ""},
        {{"path", "compare", "/b", "/a/c"}, 0, "greater\n", ""},
        {{"path", "compare", "/A", "/a"}, 0, "less\n", ""},
        {{"path", "compare", "/A", "/a", "--mode", "1"}, 0, "equal\n", ""},
        {{"path", "compare", "/é", "/e\u0301", "--mode", "2"}, 0, "equal\n", ""},
        {{"path", "compare", "/é", "/e\u0301", "--mode", "0"}, 0, "greater\n", ""},
        {{"path", "compare", "a", "/b"}, 1, "", prefix + "compare: fl:filesystem:InvalidArgument: Path must be absolute: a"},
        {{"path", "compare", "/a", "/b", "--mode", "8"}, 1, "",
         prefix + "compare: fl:filesystem:InvalidArgument: Specified character handling mask not valid"},
        {{"path", "compare", "/a", "/b", "--mode", "18"}, 1, "", prefix + "compare: fl:filesystem:InvalidArgument: Invalid mask specified"},
        {{"path", "validate", "/data/résumé.txt"}, 0, "ok\n", ""},
        {{"path", "validate", "/d/" + component}, 1, "component-length (32)\n", ""},
        {{"path", "validate", "/d/" + component, "--checks", "16"}, 0, "ok\n", ""},
        {{"path", "validate", "/" + std::string(4095, 'p'), "--checks", "0x10"}, 1, "path-length (16)\n", ""},
        {{"path", "validate", std::string(4095, 'p'), "--checks", "16"}, 0, "ok\n", ""},
        {{"path"}, 2, "", prefix + "missing operation"},
        {{"path", "move", "/a"}, 2, "", prefix + "unknown operation 'move'"},
        {{"path", "compare", "/a"}, 2, "", prefix + "compare takes two paths, A and B"},
        {{"path", "compare", "/a", "/b", "--mode", "32"}, 2, "", prefix + "mode 32 is above 31"},
        {{"path", "compare", "/a", "/b", "--mode", "x"}, 2, "", prefix + "mode 'x' is not a number"},
        {{"path", "validate", "a", "--checks", "2"}, 2, "", prefix + "checks 2 is not a sum of 1, 4, 16 and 32"},
        {{"path", "validate", "a", "--mode", "1"}, 2, "", prefix + "option --mode applies to compare only"},
        {{"path", "validate"}, 2, "", prefix + "validate takes one NAME"},
    };
    for (const auto& [call, status, out, err] : cases) expect_run(call, status, out, err);
}

TEST(CliFiles, TmpMakesNamesInTheGivenDirectory)
{
    const std::string dir = scratch_dir();
    const run_result name = run_tool({"tmp", "--dir", dir + "/", "--prefix", "p-", "--ext", "txt"});
    ASSERT_EQ(name.status, 0) << name.err;
    // "<dir>/p-hhhh-hhhh-hhhh-hhhh.txt": nothing created.
    ASSERT_EQ(name.out.size(), dir.size() + 1 + 2 + 19 + 4 + 1) << name.out;
    EXPECT_EQ(name.out.rfind(dir + "/p-", 0), 0u) << name.out;
    EXPECT_EQ(name.out.substr(name.out.size() - 5), ".txt\n");
    EXPECT_NE(::access(name.out.substr(0, name.out.size() - 1).c_str(), F_OK), 0);

    const run_result created = run_tool({"tmp", "--dir", dir, "--ext", ".log", "--create"});
    ASSERT_EQ(created.status, 0) << created.err;
    const std::string path = created.out.substr(0, created.out.size() - 1);
    EXPECT_EQ(path.rfind(dir + "/", 0), 0u);
    EXPECT_EQ(path.substr(path.size() - 4), ".log");  // one dot only
    struct stat st {};
    ASSERT_EQ(::stat(path.c_str(), &st), 0) << path;
    EXPECT_EQ(st.st_size, 0);

    expect_run({"tmp", "--dir", dir + "/no-such-dir", "--create"}, 1, "",
               "qxi18n: tmp: cannot create a temporary file in " + dir + "/no-such-dir: every name tried failed\n");
}

}  // namespace
