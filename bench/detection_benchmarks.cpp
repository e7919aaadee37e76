// Registers the charset-detection benchmarks and prints their tables: speed against raw ICU and
// libuchardet, and accuracy per encoding of the labelled corpus.
#include "detection_benchmarks.hpp"

#include "samples.hpp"

#include <fl/i18n/charset_detection.hpp>

#include <unicode/ucnv.h>
#include <unicode/ucsdet.h>
#include <uchardet.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace qxbench {
namespace {

// ASCII and valid UTF-8 are settled before the detector runs; they must cost a tenth of it.
constexpr double fast_path_ratio_limit = 0.10;

struct labelled_file {
    std::string encoding;  // the file's stem: its true encoding as uchardet's corpus spells it
    std::string bytes;
};

const std::vector<labelled_file>& corpus()
{
    static const std::vector<labelled_file> files = [] {
        namespace fs = std::filesystem;
        std::vector<labelled_file> list;
        std::vector<fs::path> paths;
        for (const auto& entry : fs::recursive_directory_iterator(QXI18N_CORPUS_DIR))
            if (entry.is_regular_file() && entry.path().extension() == ".txt" &&
                entry.path().parent_path() != fs::path(QXI18N_CORPUS_DIR))
                paths.push_back(entry.path());
        std::sort(paths.begin(), paths.end());
        for (const fs::path& path : paths) {
            std::ifstream in(path, std::ios::binary);
            list.push_back({path.stem().string(), std::string(std::istreambuf_iterator<char>(in), {})});
        }
        if (list.empty())
            throw std::runtime_error("no corpus under " QXI18N_CORPUS_DIR);
        return list;
    }();
    return files;
}

std::string ours(const std::string& bytes)
{
    static std::ostream discard(nullptr);
    return fl::i18n::detect_charset(bytes.data(), bytes.size(), discard, u"bench");
}

struct ucsdet_closer {
    void operator()(UCharsetDetector* d) const noexcept { ucsdet_close(d); }
};

std::string icu(const std::string& bytes)
{
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UCharsetDetector, ucsdet_closer> detector(ucsdet_open(&status));
    ucsdet_setText(detector.get(), bytes.data(), static_cast<int32_t>(bytes.size()), &status);
    int32_t count = 0;
    const UCharsetMatch** matches = ucsdet_detectAll(detector.get(), &count, &status);
    const char* name = count > 0 ? ucsdet_getName(matches[0], &status) : nullptr;
    return U_SUCCESS(status) && name ? name : "";
}

struct uchardet_deleter {
    void operator()(uchardet_t d) const noexcept { uchardet_delete(d); }
};

std::string uchardet(const std::string& bytes)
{
    const std::unique_ptr<std::remove_pointer_t<uchardet_t>, uchardet_deleter> detector(uchardet_new());
    if (uchardet_handle_data(detector.get(), bytes.data(), bytes.size()) != 0)
        return "";
    uchardet_data_end(detector.get());
    return uchardet_get_charset(detector.get());
}

using detector = std::string (*)(const std::string&);
constexpr std::pair<const char*, detector> implementations[] = {{"qxi18n", ours}, {"icu", icu}, {"uchardet", uchardet}};

std::map<std::string, double>& bytes_per_row()
{
    static std::map<std::string, double> rows;
    return rows;
}

// One row: every implementation over `inputs`, all of them once per call.
void add_row(const std::string& row, std::function<std::vector<const std::string*>()> inputs)
{
    for (const auto& implementation : implementations)
        register_row(row, implementation.first,
                     [inputs, detect = implementation.second, row](benchmark::State& state) {
            const std::vector<const std::string*> texts = inputs();
            double bytes = 0;
            for (const std::string* text : texts)
                bytes += static_cast<double>(text->size());
            bytes_per_row()[row] = bytes;
            for (auto _ : state)
                for (const std::string* text : texts)
                    benchmark::DoNotOptimize(detect(*text));
            state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes));
        });
}

bool is_detection_row(const std::string& name) { return name.rfind("detect/", 0) == 0; }

bool has_fast_path_target(const std::string& row) { return row.rfind("detect/corpus", 0) != 0; }

// Whether a detected name stands for the file's encoding: the same ICU converter, or names ICU
// lacks that match under its loose comparison (case, "-" and "_" ignored).
bool right(const std::string& detected, const std::string& truth)
{
    UErrorCode a = U_ZERO_ERROR, b = U_ZERO_ERROR;
    const char* x = ucnv_getAlias(detected.c_str(), 0, &a);
    const char* y = ucnv_getAlias(truth.c_str(), 0, &b);
    if (U_SUCCESS(a) && U_SUCCESS(b) && x != nullptr && y != nullptr)
        return std::string(x) == y;
    return !detected.empty() && ucnv_compareNames(detected.c_str(), truth.c_str()) == 0;
}

void print_accuracy(std::ostream& out)
{
    struct tally {
        int files = 0, ours = 0, uchardet = 0;
    };
    std::map<std::string, tally> table;
    tally all;
    for (const labelled_file& file : corpus()) {
        tally& row = table[file.encoding];
        const bool mine = right(ours(file.bytes), file.encoding);
        const bool theirs = right(uchardet(file.bytes), file.encoding);
        ++row.files, ++all.files;
        row.ours += mine, all.ours += mine;
        row.uchardet += theirs, all.uchardet += theirs;
    }
    char line[128];
    out << "\nAccuracy on the labelled corpus: files whose encoding each detector names right (an ICU\n"
           "alias of the true encoding). A library answer of the system's encoding counts as wrong.\n\n";
    std::snprintf(line, sizeof line, "%-20s %5s %7s %9s\n", "encoding", "files", "qxi18n", "uchardet");
    out << line;
    for (const auto& [encoding, row] : table) {
        std::snprintf(line, sizeof line, "%-20s %5d %7d %9d\n", encoding.c_str(), row.files, row.ours, row.uchardet);
        out << line;
    }
    std::snprintf(line, sizeof line, "%-20s %5d %7d %9d\n", "all", all.files, all.ours, all.uchardet);
    out << line;
}

int print_detection_table(const cpu_run_table& table, std::ostream& out)
{
    char line[512];
    std::snprintf(line, sizeof line,
                  "\nDetection rows: qxi18n CPU time per call (best repetition), its throughput, and ratio =\n"
                  "qxi18n / peer. Raw ICU runs its detector on every input; uchardet is libuchardet. Target:\n"
                  "ASCII and valid UTF-8 at most %.2f of raw ICU; the corpus ratios are informational.\n"
                  "! marks a miss.\n\n",
                  fast_path_ratio_limit);
    out << line;
    const char* format = "%-8s %-9s %10s %11s %8s %12s  %s\n";
    std::snprintf(line, sizeof line, format, "input", "size", "qxi18n", "MB/s", "vs ICU ", "vs uchardet ", "targets");
    out << line;
    int misses = 0;
    for (const std::string& row : table.rows()) {
        const std::size_t first = row.find('/'), last = row.rfind('/');
        const std::optional<double> mine = table.time_of(row, "qxi18n");
        std::string cells[2];
        bool miss = false;
        const char* peers[] = {"icu", "uchardet"};
        for (std::size_t i = 0; i < 2; ++i) {
            const std::optional<double> theirs = table.time_of(row, peers[i]);
            if (!mine || !theirs) {
                cells[i] = "- ";
                continue;
            }
            const double ratio = *mine / *theirs;
            const bool slow = i == 0 && has_fast_path_target(row) && ratio > fast_path_ratio_limit;
            miss = miss || slow;
            char cell[24];
            std::snprintf(cell, sizeof cell, ratio < 0.1 ? "%.4f%s" : "%.2f%s", ratio, slow ? "!" : " ");
            cells[i] = cell;
        }
        misses += miss;
        char throughput[24] = "-";
        if (const auto bytes = bytes_per_row().find(row); mine && bytes != bytes_per_row().end())
            std::snprintf(throughput, sizeof throughput, "%.0f", bytes->second / *mine / 1e6);
        const std::string verdict = !mine ? "no result" : miss ? "MISS ICU" : has_fast_path_target(row) ? "ok"
                                                                                                        : "informational";
        std::snprintf(line, sizeof line, format, row.substr(first + 1, last - first - 1).c_str(),
                      row.substr(last + 1).c_str(), mine ? format_time(*mine).c_str() : "-", throughput,
                      cells[0].c_str(), cells[1].c_str(), verdict.c_str());
        out << line;
    }
    out << "\n" << misses << " of " << table.size() << " detection rows miss a target.\n";
    print_accuracy(out);
    return misses;
}

}  // namespace

void register_detection_benchmarks()
{
    for (const text_source* text : {&utf8_texts()[0], &utf8_texts()[2]})
        for (const auto& [bytes, label] : {std::pair<std::size_t, const char*>{1024, "1KiB"},
                                          {64 * 1024, "64KiB"}, {1024 * 1024, "1MiB"}}) {
            const std::string name = std::string(text == &utf8_texts()[0] ? "ascii" : "utf8");
            add_row("detect/" + name + "/" + label,
                    [text, bytes = bytes] { return std::vector<const std::string*>{&sample_for(*text, bytes).bytes}; });
        }
    add_row("detect/corpus/116files", [] {
        std::vector<const std::string*> texts;
        for (const labelled_file& file : corpus())
            texts.push_back(&file.bytes);
        return texts;
    });
}

std::unique_ptr<table_family> detection_family()
{
    return cpu_table_family(is_detection_row, print_detection_table);
}

}  // namespace qxbench
