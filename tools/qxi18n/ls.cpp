// `qxi18n ls`: the entries of directories, one level or a whole tree breadth-first, optionally
// filtered by a wildcard, with their type, permissions, size and times on request.
#include "cli.hpp"

#include <fl/filesystem/directory_iterator.hpp>
#include <fl/filesystem/foundation/file_status.hpp>
#include <fl/filesystem/foundation/filesystem_error.hpp>
#include <fl/filesystem/recursive_directory_iterator.hpp>
#include <fl/i18n/character_handling.hpp>
#include <fl/i18n/conversion.hpp>
#include <fl/i18n/pattern_match.hpp>

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qxi18n_tool {

namespace {

namespace fs = fl::filesystem;
using fs::file_status;

void print_help()
{
    std::printf("Usage: qxi18n ls [-r] [-a] [--pattern WILDCARD] [--long] DIR...\n\n"
                "Lists the entries of each DIR in the order the system gives them (never sorted),\n"
                "one line per entry, names in UTF-8. Without -r a line holds the entry's name; with\n"
                "-r its path below DIR. With several DIRs each listing starts with a \"DIR:\" line.\n\n"
                "Options:\n"
                "  -r, --recursive     the whole tree, breadth-first: all entries of a directory\n"
                "                      before those of its subdirectories; links are not followed\n"
                "  -a, --all           include \".\" and \"..\" (of DIR itself with -r)\n"
                "  --pattern WILDCARD  only names matching WILDCARD, where \"*\" is the only\n"
                "                      wildcard and matching is case-sensitive (\"*.txt\"); with -r\n"
                "                      the whole tree is still walked\n"
                "  -l, --long          TYPE PERMISSIONS SIZE MODIFIED ACCESSED CHANGED NAME, times\n"
                "                      in UTC with microseconds; a link shows its own status and\n"
                "                      \"-> TYPE\" of its target (\"missing\" when dangling)\n"
                "  -h, --help          show this help\n\n"
                "A DIR that cannot be listed is reported as the library's key and the path; the\n"
                "next DIR is still listed.\n\n"
                "Exit status: 0 success, 1 a DIR could not be listed, 2 bad usage.\n");
}

struct settings {
    bool recursive = false, all = false, long_format = false;
    std::optional<std::u16string> pattern;
};

const char* type_name(file_status::type_type type)
{
    switch (type) {
    case file_status::regular_file: return "regular";
    case file_status::directory_file: return "directory";
    case file_status::symlink_file: return "symlink";
    case file_status::fifo_file: return "fifo";
    case file_status::socket_file: return "socket";
    case file_status::block_file: return "block";
    case file_status::character_file: return "character";
    case file_status::file_not_found: return "missing";
    default: return "unknown";
    }
}

// "rwxr-x---" with the set-id and sticky bits in the execute columns, as ls shows them.
std::string permission_text(file_status::perms_type perms)
{
    std::string text = "---------";
    static const char letters[] = "rwx";
    for (unsigned bit = 0; bit < 9; ++bit)
        if ((perms & (0400U >> bit)) != 0)
            text[bit] = letters[bit % 3];
    const auto special = [&](unsigned mask, std::size_t column, char letter) {
        if ((perms & mask) != 0)
            text[column] = text[column] == 'x' ? letter : static_cast<char>(letter - 'a' + 'A');
    };
    special(04000U, 2, 's');
    special(02000U, 5, 's');
    special(01000U, 8, 't');
    return text;
}

std::string time_text(const boost::posix_time::ptime& time)
{
    if (time.is_special())
        return "-";
    const auto date = time.date();
    const auto clock = time.time_of_day();
    char text[96];  // room for any int in every field, so nothing is ever cut
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%06lld", static_cast<int>(date.year()),
                  static_cast<int>(date.month()), static_cast<int>(date.day()), static_cast<int>(clock.hours()),
                  static_cast<int>(clock.minutes()), static_cast<int>(clock.seconds()),
                  static_cast<long long>(clock.fractional_seconds()));
    return text;
}

void print_entry(const fs::upath_directory_entry& entry, const std::string& name, bool long_format)
{
    if (!long_format) {
        std::printf("%s\n", name.c_str());
        return;
    }
    const file_status own = entry.symlink_status();
    const file_status shown = own.is_symlink() ? own : entry.status();
    std::string target;
    if (own.is_symlink())
        target = std::string(" -> ") + type_name(entry.target_type());
    std::printf("%-9s %s %10ju %s %s %s %s%s\n", type_name(shown.type()), permission_text(shown.permissions()).c_str(),
                shown.size(), time_text(shown.last_write_time()).c_str(), time_text(shown.access_time()).c_str(),
                time_text(shown.change_time()).c_str(), name.c_str(), target.c_str());
}

// The entry's path below the root of a walk: the directories are absolute in native form on both sides.
std::string relative_name(const fs::upath_directory_entry& entry, const std::u16string& root)
{
    const std::u16string directory = entry.pathname();
    std::u16string below;
    if (directory.size() > root.size())
        below = directory.substr(root.size() + (root.back() == u'/' ? 0 : 1)) + u'/';
    return fl::i18n::ustring_to_utf8(below + entry.filename());
}

void list_one(const std::u16string& directory, const settings& s)
{
    std::unique_ptr<fs::wildcard_pattern_string_context> pattern;
    if (s.pattern)
        pattern = std::make_unique<fs::wildcard_pattern_string_context>(*s.pattern);
    const fs::upath path(directory);
    if (!s.recursive) {
        const fs::upath_directory_iterator end;
        for (fs::upath_directory_iterator it = pattern ? fs::upath_directory_iterator(path, *pattern, false, s.all)
                                                       : fs::upath_directory_iterator(path, s.all);
             it != end; ++it)
            print_entry(*it, fl::i18n::ustring_to_utf8(it->filename()), s.long_format);
        return;
    }
    // The wildcard of a walk filters what is shown, not which directories are entered.
    std::optional<fl::i18n::pattern_match> matcher;
    if (pattern)
        matcher.emplace(pattern->pattern(), fl::i18n::character_handling_mode_context(0));
    const std::u16string root = fs::absolute(path).string();
    const fs::upath_recursive_directory_iterator end;
    for (fs::upath_recursive_directory_iterator it(fs::upath_directory_iterator(path, s.all)); it != end; ++it)
        if (!matcher || matcher->match(it->filename()))
            print_entry(*it, relative_name(*it, root), s.long_format);
}

}  // namespace

int run_ls(int argc, char** argv)
{
    arguments args(argc, argv, "ls");
    settings s;
    std::vector<std::string> directories;
    std::string pattern;
    while (args.more()) {
        if (args.help()) {
            print_help();
            return exit_ok;
        }
        if (args.flag("-r", "--recursive"))
            s.recursive = true;
        else if (args.flag("-a", "--all"))
            s.all = true;
        else if (args.flag("-l", "--long"))
            s.long_format = true;
        else if (args.option(nullptr, "--pattern", pattern)) {
            if (pattern.empty() || pattern.find('/') != std::string::npos)
                throw usage_error("ls", "pattern '" + pattern + "' is not a file name");
            s.pattern = file_name_argument(pattern);
        } else {
            directories.push_back(args.operand());
            if (directories.back().empty())
                throw usage_error("ls", "empty directory name");
        }
    }
    if (directories.empty())
        throw usage_error("ls", "missing directory");

    int status = exit_ok;
    for (std::size_t i = 0; i < directories.size(); ++i) {
        if (directories.size() > 1)
            std::printf("%s%s:\n", i == 0 ? "" : "\n", directories[i].c_str());
        try {
            list_one(file_name_argument(directories[i]), s);
        } catch (const fs::FsysExceptionBase& e) {
            report("ls: " + describe_failure(e));
            status = exit_data_error;
        }
    }
    return status;
}

}  // namespace qxi18n_tool
