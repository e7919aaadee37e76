// Registers the path and file benchmarks and prints their table: directory listings, path
// comparison and fopen beside libc with ICU, raw ICU comparisons and std::filesystem.
#include "filesystem_benchmarks.hpp"

#include "allocation_counter.hpp"

#include <fl/filesystem/directory_iterator.hpp>
#include <fl/filesystem/file_open.hpp>
#include <fl/filesystem/path_rules.hpp>
#include <fl/filesystem/recursive_directory_iterator.hpp>
#include <fl/i18n/character_handling.hpp>
#include <fl/i18n/conversion.hpp>

#include <unicode/unorm.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>

#include <benchmark/benchmark.h>

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace qxbench {
namespace {

namespace fs = fl::filesystem;
namespace stdfs = std::filesystem;
using fl::i18n::character_handling_mode_context;

// The listing of one directory adds a name conversion and a record per entry to readdir.
constexpr double raw_listing_ratio_limit = 1.2;
constexpr double std_listing_ratio_limit = 1.0;

constexpr std::size_t flat_files = 10000;
constexpr std::size_t tree_entries = 100000;
constexpr int tree_depth = 5;   // levels of entries below the root; files only on the last
constexpr std::size_t tree_fanout = 4;  // subdirectories of each directory above the last two levels

constexpr const char* listing_op = "fs::directory_iterator";
constexpr const char* walk_op = "fs::recursive_directory_iterator";

// --- the trees ---

void check(UErrorCode status, const char* what)
{
    if (U_FAILURE(status))
        throw std::runtime_error(std::string(what) + ": " + u_errorName(status));
}

[[noreturn]] void throw_errno(const char* what, const std::string& path)
{
    throw std::runtime_error(std::string(what) + " " + path + ": " + std::strerror(errno));
}

struct file_closer {
    void operator()(std::FILE* f) const noexcept { std::fclose(f); }
};
struct dir_closer {
    void operator()(DIR* d) const noexcept { ::closedir(d); }
};
using file_ptr = std::unique_ptr<std::FILE, file_closer>;
using dir_ptr = std::unique_ptr<DIR, dir_closer>;

// Removes everything under it when it goes, also when the trees are only half made.
class temporary_directory {
public:
    temporary_directory()
    {
        // mkdtemp puts random characters in place of the six trailing 'X'.
        std::string name = (stdfs::temp_directory_path() / "qxi18n-fsbench-").string() + std::string(6, 'X');
        if (::mkdtemp(name.data()) == nullptr)
            throw_errno("mkdtemp", name);
        path_ = std::move(name);
    }
    ~temporary_directory()
    {
        std::error_code ignored;
        stdfs::remove_all(path_, ignored);
    }
    temporary_directory(const temporary_directory&) = delete;
    temporary_directory& operator=(const temporary_directory&) = delete;

    const std::string& path() const noexcept { return path_; }

private:
    std::string path_;
};

void make_directory(const std::string& path)
{
    if (::mkdir(path.c_str(), 0755) != 0)
        throw_errno("mkdir", path);
}

void make_file(const std::string& path, const char* content)
{
    const file_ptr file(std::fopen(path.c_str(), "wx"));
    if (!file || std::fputs(content, file.get()) < 0)
        throw_errno("fopen", path);
}

// Accented Latin, Greek, Japanese and a mix: every name has non-ASCII characters.
constexpr std::array<std::u16string_view, 4> name_stems{
    u"résumé", u"Ελληνικά", u"日本語の文書", u"Straße-Ørsted"};

ustring numbered(std::u16string_view stem, std::size_t number, std::u16string_view suffix)
{
    ustring name(stem);
    name += u'-';
    for (const char digit : std::to_string(number))
        name += static_cast<char16_t>(digit);
    name += suffix;
    return name;
}

ustring file_name(std::size_t number)
{
    return numbered(name_stems[number % name_stems.size()], number, u".txt");
}

std::string utf8(const ustring& name)
{
    return fl::i18n::ustring_to_utf8(name);
}

struct trees {
    temporary_directory root;
    std::string flat = root.path() + "/flat";  // flat_files files
    std::string tree = root.path() + "/tree";  // tree_entries entries, tree_depth levels
    std::vector<ustring> flat_names;           // sorted
    std::vector<ustring> tree_names;           // sorted, directories included
    ustring existing_file = fl::i18n::utf8_to_ustring(root.path()) + u"/fopen-Ünïcödé-文書.txt";

    trees()
    {
        make_directory(flat);
        for (std::size_t i = 0; i < flat_files; ++i) {
            flat_names.push_back(file_name(i));
            make_file(flat + "/" + utf8(flat_names.back()), "");
        }
        std::sort(flat_names.begin(), flat_names.end());

        make_directory(tree);
        std::vector<std::string> level{tree};
        for (int depth = 1; depth < tree_depth; ++depth) {
            std::vector<std::string> next;
            for (const std::string& parent : level) {
                for (std::size_t k = 0; k < tree_fanout; ++k) {
                    tree_names.push_back(numbered(u"Ordnér", k, u""));
                    next.push_back(parent + "/" + utf8(tree_names.back()));
                    make_directory(next.back());
                }
            }
            level = std::move(next);
        }
        // The files fill the deepest directories in turn up to the entry count.
        for (std::size_t i = 0; tree_names.size() < tree_entries; ++i) {
            tree_names.push_back(file_name(i));
            make_file(level[i % level.size()] + "/" + utf8(tree_names.back()), "");
        }
        std::sort(tree_names.begin(), tree_names.end());

        make_file(utf8(existing_file), "fopen");
    }
};

// Made by the first benchmark that needs them, so that other runs do not wait for 110,000 files.
const trees& fixture()
{
    static const trees made;
    return made;
}

// --- listings: each hands every name to `visit` as UTF-16 ---

// One directory or a whole tree, as the iterator type says.
template <class Iterator, class Visit>
void list_qxi18n(const fs::upath& directory, Visit&& visit)
{
    for (Iterator it(directory), end; it != end; ++it) {
        const ustring name = it->filename();
        visit(std::u16string_view(name));
    }
}

template <class Iterator, class Visit>
void list_std(const stdfs::path& directory, Visit&& visit)
{
    for (const stdfs::directory_entry& entry : Iterator(directory)) {
        const std::u16string name = entry.path().filename().u16string();
        visit(std::u16string_view(name));
    }
}

bool is_dot_entry(const char* name)
{
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

// readdir as a careful C caller writes it: each name converted into a stack buffer.
template <class Visit>
void list_raw(const std::string& directory, Visit&& visit)
{
    const dir_ptr handle(::opendir(directory.c_str()));
    if (!handle)
        throw_errno("opendir", directory);
    char16_t buffer[1024];
    for (;;) {
        errno = 0;
        const dirent* entry = ::readdir(handle.get());
        if (entry == nullptr) {
            if (errno != 0)
                throw_errno("readdir", directory);
            return;
        }
        if (is_dot_entry(entry->d_name))
            continue;
        UErrorCode status = U_ZERO_ERROR;
        int32_t length = 0;
        u_strFromUTF8(buffer, static_cast<int32_t>(std::size(buffer)), &length, entry->d_name, -1, &status);
        check(status, "u_strFromUTF8");
        visit(std::u16string_view(buffer, static_cast<std::size_t>(length)));
    }
}

// --- registration ---


// Times `call`, whose answer the caller has checked, counting operator new calls per item (a
// name of a listing, else a call); a limit of 0 or more becomes the row's allocation target.
template <class Call>
void time_calls(benchmark::State& state, Call&& call, std::size_t items, double allocation_limit = -1)
{
    const std::uint64_t before = allocations_on_this_thread();
    for (auto _ : state) {
        auto result = call();
        benchmark::DoNotOptimize(result);
        benchmark::ClobberMemory();
    }
    const auto calls = static_cast<double>(allocations_on_this_thread() - before);
    const auto per_call = static_cast<double>(items);
    state.counters["allocs"] = benchmark::Counter(calls / per_call, benchmark::Counter::kAvgIterations);
    state.counters["items"] = per_call;
    if (allocation_limit >= 0)
        state.counters["alloc_limit"] = allocation_limit;
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(items));
}

// Checks that `list` gives the names that were created, then times it with a visitor that
// touches every name.
template <class List>
void time_listing(benchmark::State& state, const std::vector<ustring>& expected, List list,
                  double allocation_limit = -1)
{
    std::vector<ustring> names;
    list([&names](std::u16string_view name) { names.emplace_back(name); });
    std::sort(names.begin(), names.end());
    if (names != expected)
        return state.SkipWithError("names differ from those created");
    time_calls(
        state,
        [&list] {
            std::size_t checksum = 0;
            list([&checksum](std::u16string_view name) { checksum += name.size() + name.front(); });
            return checksum;
        },
        expected.size(), allocation_limit);
}

fs::upath upath_of(const std::string& bytes)
{
    return fs::upath(fl::i18n::utf8_to_ustring(bytes));
}

// The library and std::filesystem walking the directory `root` of the trees, which holds `names`.
template <class Iterator, class StdIterator>
void add_iteration_rows(const std::string& row, std::string trees::*root, std::vector<ustring> trees::*names,
                        double allocation_limit)
{
    register_row(row, "qxi18n", [root, names, allocation_limit](benchmark::State& state) {
        const trees& t = fixture();
        const fs::upath path = upath_of(t.*root);
        auto list = [&path](auto&& visit) { list_qxi18n<Iterator>(path, visit); };
        time_listing(state, t.*names, list, allocation_limit);
    });
    register_row(row, "std_fs", [root, names](benchmark::State& state) {
        const trees& t = fixture();
        const stdfs::path path(t.*root);
        time_listing(state, t.*names, [&path](auto&& visit) { list_std<StdIterator>(path, visit); });
    });
}

void add_listing_rows()
{
    const std::string row = std::string(listing_op) + "/" + std::to_string(flat_files / 1000) + "K_non_ascii";
    // Each name is longer than the inline buffer of a ustring, so the result is one allocation.
    add_iteration_rows<fs::upath_directory_iterator, stdfs::directory_iterator>(row, &trees::flat, &trees::flat_names,
                                                                                1);
    register_row(row, "readdir_icu", [](benchmark::State& state) {
        const trees& t = fixture();
        time_listing(state, t.flat_names, [&t](auto&& visit) { list_raw(t.flat, visit); });
    });
    const std::string walk_row = std::string(walk_op) + "/" + std::to_string(tree_entries / 1000) + "K_depth" +
                                 std::to_string(tree_depth);
    add_iteration_rows<fs::upath_recursive_directory_iterator, stdfs::recursive_directory_iterator>(
        walk_row, &trees::tree, &trees::tree_names, -1);
}

int32_t length_of(const ustring& text)
{
    return static_cast<int32_t>(text.size());
}

ustring nfd_of(const ustring& text)
{
    UErrorCode status = U_ZERO_ERROR;
    const UNormalizer2* nfd = unorm2_getNFDInstance(&status);
    check(status, "unorm2_getNFDInstance");
    char16_t buffer[256];
    const int32_t length = unorm2_normalize(nfd, text.data(), length_of(text), buffer,
                                            static_cast<int32_t>(std::size(buffer)), &status);
    check(status, "unorm2_normalize");
    return ustring(buffer, static_cast<std::size_t>(length));
}

int icu_binary_compare(const ustring& a, const ustring& b)
{
    return u_strCompare(a.data(), length_of(a), b.data(), length_of(b), false);
}

int icu_normalized_compare(const ustring& a, const ustring& b)
{
    UErrorCode status = U_ZERO_ERROR;
    const int order = unorm_compare(a.data(), length_of(a), b.data(), length_of(b), 0, &status);
    check(status, "unorm_compare");
    return order;
}

// Two equal paths in separate buffers, so that both sides read all of them; the normalising
// mode gets the decomposed form of the non-ASCII path on the right. The ASCII path has 19 units,
// the most that the library compares without the normaliser.
void add_compare_rows(const char* op, unsigned mask, int (*icu)(const ustring&, const ustring&))
{
    const ustring ascii = u"/srv/data/notes.txt";
    const ustring non_ascii = u"/home/zoë/Résumé/Ἀθῆναι.txt";
    const bool normalising = mask != character_handling_mode_context::default_mode;
    const std::pair<const char*, std::pair<ustring, ustring>> cases[] = {
        {"ascii", {ascii, ascii}},
        {normalising ? "non_ascii_nfc_nfd" : "non_ascii", {non_ascii, normalising ? nfd_of(non_ascii) : non_ascii}},
    };
    for (const auto& [label, paths] : cases) {
        const std::string row = std::string(op) + "/" + label;
        register_row(row, "qxi18n", [paths = paths, mask](benchmark::State& state) {
            const character_handling_mode_context mode(mask);
            auto call = [&paths, &mode] { return fs::compare(paths.first, paths.second, mode); };
            if (call() != 0)
                return state.SkipWithError("the paths compare unequal");
            time_calls(state, call, 1);
        });
        register_row(row, "icu", [paths = paths, icu](benchmark::State& state) {
            auto call = [&paths, icu] { return icu(paths.first, paths.second); };
            if (call() != 0)
                return state.SkipWithError("the paths compare unequal");
            time_calls(state, call, 1);
        });
    }
}

// The first line of a stream, to see that both sides opened the same file.
std::string first_line(std::FILE* file)
{
    char line[64] = {};
    return std::fgets(line, sizeof line, file) != nullptr ? line : "";
}

void add_fopen_rows()
{
    const std::string row = "fs::fopen/existing";
    register_row(row, "qxi18n", [](benchmark::State& state) {
        const ustring& name = fixture().existing_file;
        const std::string mode = "r";
        if (first_line(file_ptr(fs::fopen(name, mode)).get()) != "fopen")
            return state.SkipWithError("fopen did not open the file");
        time_calls(state, [&name, &mode] { return file_ptr(fs::fopen(name, mode)) != nullptr; }, 1);
    });
    register_row(row, "libc", [](benchmark::State& state) {
        const std::string name = utf8(fixture().existing_file);
        if (first_line(file_ptr(std::fopen(name.c_str(), "r")).get()) != "fopen")
            return state.SkipWithError("fopen did not open the file");
        time_calls(state, [&name] { return file_ptr(std::fopen(name.c_str(), "r")) != nullptr; }, 1);
    });
}

// --- the table ---

bool is_filesystem_row(const std::string& name)
{
    return name.rfind("fs::", 0) == 0;
}

bool has_listing_target(const std::string& row)
{
    return row.rfind(listing_op, 0) == 0;
}

int print_filesystem_table(const cpu_run_table& table, std::ostream& out)
{
    auto time_of = [&table](const std::string& row, const char* impl) { return table.time_of(row, impl); };

    char line[640];
    std::snprintf(line, sizeof line,
                  "\nPath and file rows: qxi18n CPU time per call (best repetition) and per item (a name of a\n"
                  "listing, else the call), its operator new calls per item against the row's limit, and\n"
                  "ratio = qxi18n / peer. Raw peers: readdir with u_strFromUTF8 into a stack buffer,\n"
                  "u_strCompare or unorm_compare, ::fopen of the UTF-8 name. Targets: directory_iterator within\n"
                  "%.2f of raw readdir and %.2f of std::filesystem, no allocation beyond the result per name;\n"
                  "the other ratios are informational. ! marks a miss.\n\n",
                  raw_listing_ratio_limit, std_listing_ratio_limit);
    out << line;
    const char* format = "%-38s %-18s %10s %10s %7s %5s %8s %10s  %s\n";
    std::snprintf(line, sizeof line, format, "operation", "case", "qxi18n", "per item", "allocs", "limit", "vs raw ",
                  "vs std::fs ", "targets");
    out << line;

    int misses = 0;
    for (const std::string& row : table.rows()) {
        const std::size_t slash = row.rfind('/');
        const std::optional<double> ours = time_of(row, "qxi18n");
        const auto mine = table.find(row, "qxi18n");

        // The raw peer of a row is whichever of these it registered.
        std::optional<double> raw;
        for (const char* key : {"readdir_icu", "icu", "libc"})
            if (!raw)
                raw = time_of(row, key);
        const std::optional<double> peers[] = {raw, time_of(row, "std_fs")};
        const double limits[] = {raw_listing_ratio_limit, std_listing_ratio_limit};

        std::string ratios[2];
        bool slow = false;
        for (std::size_t i = 0; i < 2; ++i) {
            if (!ours || !peers[i]) {
                ratios[i] = "- ";
                continue;
            }
            const double ratio = *ours / *peers[i];
            const bool miss = has_listing_target(row) && ratio > limits[i];
            slow = slow || miss;
            char cell[16];
            std::snprintf(cell, sizeof cell, "%.2f%s", ratio, miss ? "!" : " ");
            ratios[i] = cell;
        }

        char per_item[32] = "-";
        if (mine != nullptr && ours && mine->items > 1)
            std::snprintf(per_item, sizeof per_item, "%s", format_time(*ours / mine->items).c_str());
        const allocation_cells cells = allocation_cells_of(mine, 2);
        const std::string verdict = verdict_of(ours.has_value(), slow, "time", cells.over, has_listing_target(row));
        misses += slow || cells.over ? 1 : 0;
        std::snprintf(line, sizeof line, format, row.substr(0, slash).c_str(), row.substr(slash + 1).c_str(),
                      ours ? format_time(*ours).c_str() : "-", per_item, cells.allocs, cells.limit, ratios[0].c_str(),
                      ratios[1].c_str(), verdict.c_str());
        out << line;
    }
    out << "\n" << misses << " of " << table.size() << " path and file rows miss a target.\n";
    return misses;
}

}  // namespace

void register_filesystem_benchmarks()
{
    add_listing_rows();
    add_compare_rows("fs::compare<default_mode>", character_handling_mode_context::default_mode, icu_binary_compare);
    add_compare_rows("fs::compare<normalized_compose_mode>", character_handling_mode_context::normalized_compose_mode,
                     icu_normalized_compare);
    add_fopen_rows();
}

std::unique_ptr<table_family> filesystem_family()
{
    return cpu_table_family(is_filesystem_row, print_filesystem_table);
}

}  // namespace qxbench
