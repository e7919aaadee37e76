// Registers the locale benchmarks and prints their table: the library and its peers side by side.
#include "locale_benchmarks.hpp"

#include "allocation_counter.hpp"
#include "peers.hpp"
#include "samples.hpp"

#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion.hpp>
#include <fl/i18n/locale.hpp>

#include <unicode/locid.h>
#include <unicode/uloc.h>

#include <benchmark/benchmark.h>

#include <locale.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace qxbench {
namespace {

using fl::i18n::QxLocale;

constexpr const char* create_op = "createLocale";
constexpr const char* global_op = "QxLocale::global";
constexpr const char* convert_op = "default_converter";

// The ceiling of QxLocale::global, called on every narrow conversion.
constexpr double global_limit_seconds = 50e-9;

struct name_group {
    const char* label;
    std::vector<std::string> names;
    bool valid;  // whether the library must accept every name of the group, or refuse every one
};

const std::vector<name_group>& name_groups()
{
    static const std::vector<name_group> groups{
        {"plain", {"de_DE", "en_US", "ja_JP"}, true},
        {"alias", {"C", "iw_IL", "zh-Hant"}, true},
        {"de_DE.UTF-8@euro", {"de_DE.UTF-8@euro"}, true},
        {"zh-Hant_TW", {"zh-Hant_TW"}, true},
        {"bad", {"xx_YY", "en_4199"}, false},
    };
    return groups;
}

// Each returns whether the name was accepted; a refusal is timed like an acceptance.
bool qxi18n_create(const std::string& name)
{
    try {
        const std::shared_ptr<QxLocale> locale = QxLocale::createLocale(name);
        benchmark::DoNotOptimize(locale.get());
        return true;
    } catch (const fl::i18n::QxLcInvLcName&) {
        return false;
    }
}

bool icu_create(const std::string& name)
{
    const icu::Locale locale(name.c_str());
    char canonical[ULOC_FULLNAME_CAPACITY];
    UErrorCode status = U_ZERO_ERROR;
    uloc_canonicalize(name.c_str(), canonical, sizeof canonical, &status);
    benchmark::DoNotOptimize(locale.getName());
    benchmark::DoNotOptimize(&canonical[0]);
    return !locale.isBogus() && U_SUCCESS(status);
}

// Only the locales generated on the machine open; a refusal still searches the locale archive.
bool glibc_create(const std::string& name)
{
    const locale_t locale = newlocale(LC_ALL_MASK, name.c_str(), nullptr);
    if (locale == nullptr)
        return false;
    freelocale(locale);
    return true;
}


// One call per iteration, going round the names of the group, so the time is a mean per name.
void time_create(benchmark::State& state, const name_group& group, bool (*create)(const std::string&),
                 bool is_library)
{
    std::size_t failing = 0;
    for (const std::string& name : group.names)
        failing += create(name) ? 0U : 1U;
    if (is_library && failing != (group.valid ? 0 : group.names.size())) {
        state.SkipWithError(group.valid ? "a good name was refused" : "a bad name was accepted");
        return;
    }
    const std::uint64_t before = allocations_on_this_thread();
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(create(group.names[next]));
        if (++next == group.names.size())
            next = 0;
    }
    count_allocations(state, before);
    state.counters["failing"] = static_cast<double>(failing);
}

void add_create_rows(const name_group& group)
{
    const std::string row = std::string(create_op) + "/" + group.label;
    register_row(row, "qxi18n", [&group](benchmark::State& s) { time_create(s, group, qxi18n_create, true); });
    register_row(row, "icu", [&group](benchmark::State& s) { time_create(s, group, icu_create, false); });
    register_row(row, "glibc", [&group](benchmark::State& s) { time_create(s, group, glibc_create, false); });
}

void add_global_rows()
{
    const std::string row = std::string(global_op) + "/uncontended";
    register_row(row, "qxi18n", [](benchmark::State& state) {
        QxLocale::global();  // the first call creates the locale context
        const std::uint64_t before = allocations_on_this_thread();
        for (auto _ : state) {
            const QxLocale& locale = QxLocale::global();
            benchmark::DoNotOptimize(&locale);
        }
        count_allocations(state, before);
    });
    // The same lock, read of the last element and unlock, inline and without the shared library.
    register_row(row, "mutex", [](benchmark::State& state) {
        std::mutex mutex;
        const int classic = 0;
        const std::vector<const int*> stack{&classic};
        benchmark::DoNotOptimize(stack.data());  // the read must stay under the lock
        const std::uint64_t before = allocations_on_this_thread();
        for (auto _ : state) {
            const int* current = nullptr;
            {
                const std::lock_guard<std::mutex> lock(mutex);
                current = stack.back();
            }
            benchmark::DoNotOptimize(current);
        }
        count_allocations(state, before);
    });
}

// The accented prose cut to 32 bytes of UTF-8, the encoding of the global locale until start-up.
const sample& short_text()
{
    return sample_for(utf8_texts()[1], 32);
}

void add_conversion_rows()
{
    const std::string per_call = std::string(convert_op) + "/latin/32B/per_call";
    register_row(per_call, "qxi18n", [](benchmark::State& state) {
        auto convert = [](const std::string& s) {
            const fl::i18n::codecvt_string_to_ustring cvt("", true);
            return fl::i18n::to_ustring(s, cvt);
        };
        time_checked_conversion(state, short_text(), convert);
    });
    register_row(per_call, "icu", [](benchmark::State& state) {
        auto convert = [](const std::string& s) { return peer::icu_codepage("UTF-8").to_utf16(s); };
        time_checked_conversion(state, short_text(), convert);
    });

    const std::string reused = std::string(convert_op) + "/latin/32B/reused";
    register_row(reused, "qxi18n", [](benchmark::State& state) {
        auto convert = [cvt = fl::i18n::codecvt_string_to_ustring("", true)](const std::string& s) {
            return fl::i18n::to_ustring(s, cvt);
        };
        time_checked_conversion(state, short_text(), convert);
    });
    register_row(reused, "icu", [](benchmark::State& state) {
        auto convert = [cnv = peer::icu_codepage("UTF-8")](const std::string& s) { return cnv.to_utf16(s); };
        time_checked_conversion(state, short_text(), convert);
    });
}

// --- the table ---

struct row_name {
    std::string op;
    std::string which;  // the case: a name group, "uncontended", "latin/32B/reused"
    std::string impl;
};

row_name split(const std::string& name)
{
    const std::size_t first = name.find('/');
    const std::size_t last = name.rfind('/');
    if (first == std::string::npos || first == last)
        return {name, "", ""};
    return {name.substr(0, first), name.substr(first + 1, last - first - 1), name.substr(last + 1)};
}

bool is_locale_row(const std::string& name)
{
    const std::string op = split(name).op;
    return op == create_op || op == global_op || op == convert_op;
}

const name_group* group_of(const std::string& label)
{
    for (const name_group& group : name_groups())
        if (label == group.label)
            return &group;
    return nullptr;
}

// The locale rows on wall time, whose peers, targets and allocation counts are not those of
// the conversions. Their console lines are held back and shown together at the end, in
// registration order: their counters differ from the conversions', and interleaved they would
// repeat the header often.
class locale_table : public table_family {
public:
    bool owns(const std::string& name) const override { return is_locale_row(name); }
    std::vector<Run> record(const std::vector<Run>& runs) override;
    std::vector<Run> take_held() override;
    bool empty() const override { return rows_.empty(); }
    int print(std::ostream& out) const override;

private:
    struct result {
        std::vector<double> seconds;  // per call, one entry per repetition
        double allocations = -1;      // operator new calls per call; -1 when not counted
        double failing = 0;           // names of the group that the implementation refuses
    };

    std::map<std::string, result> results_;  // "op/case/impl"
    std::map<std::string, int64_t> rows_;    // "op/case" -> registration order
    std::vector<Run> held_;                  // console lines shown at the end
};

std::vector<table_family::Run> locale_table::record(const std::vector<Run>& runs)
{
    std::vector<Run> shown;
    for (const Run& run : runs) {
        const bool repeated = run.repetitions > 1;
        if (run.run_type == Run::RT_Iteration && !run.error_occurred && run.iterations > 0) {
            const std::string& name = run.run_name.function_name;
            result& entry = results_[name];
            entry.seconds.push_back(run.real_accumulated_time / static_cast<double>(run.iterations));
            if (const auto allocs = run.counters.find("allocs"); allocs != run.counters.end())
                entry.allocations = entry.allocations < 0 ? allocs->second.value
                                                          : std::min(entry.allocations, allocs->second.value);
            if (const auto failing = run.counters.find("failing"); failing != run.counters.end())
                entry.failing = failing->second.value;
            const row_name parts = split(name);
            const auto [row, added] = rows_.emplace(parts.op + "/" + parts.which, run.family_index);
            if (!added)
                row->second = std::min(row->second, run.family_index);
        }
        const bool is_median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
        if (run.error_occurred || !repeated || is_median)
            shown.push_back(run);
    }
    held_.insert(held_.end(), shown.begin(), shown.end());
    return {};
}

std::vector<table_family::Run> locale_table::take_held()
{
    std::stable_sort(held_.begin(), held_.end(),
                     [](const Run& a, const Run& b) { return a.family_index < b.family_index; });
    return std::exchange(held_, {});
}

int locale_table::print(std::ostream& out) const
{
    // Another process can only slow a repetition down, so the fastest is the code's own cost.
    auto time_of = [this](const std::string& row, const char* impl) -> std::optional<double> {
        const auto found = results_.find(row + "/" + impl);
        if (found == results_.end())
            return std::nullopt;
        return best(found->second.seconds);
    };

    char line[512];
    std::snprintf(line, sizeof line,
                  "\nLocale rows: qxi18n time per call (best repetition), its operator new calls per call,\n"
                  "and ratio = qxi18n / peer. Targets: %s under %.0f ns without allocation, createLocale\n"
                  "of a plain name no slower than ICU; ! marks a miss.\n\n",
                  global_op, global_limit_seconds * 1e9);
    out << line;
    const char* format = "%-18s %-20s %10s %7s %8s %9s %9s  %s\n";
    std::snprintf(line, sizeof line, format, "operation", "case", "qxi18n", "allocs", "vs ICU ", "vs glibc ",
                  "vs mutex ", "targets, refused names");
    out << line;


    int misses = 0;
    for (const std::string& row : in_registration_order(rows_)) {
        const row_name parts = split(row + "/");
        const std::optional<double> ours = time_of(row, "qxi18n");
        const auto mine = results_.find(row + "/qxi18n");
        const double allocations = mine == results_.end() ? -1 : mine->second.allocations;

        std::string ratios[3];
        const char* peer_keys[] = {"icu", "glibc", "mutex"};
        for (std::size_t i = 0; i < 3; ++i) {
            const std::optional<double> theirs = time_of(row, peer_keys[i]);
            char cell[16] = "- ";
            if (ours && theirs)
                std::snprintf(cell, sizeof cell, "%.2f ", *ours / *theirs);
            ratios[i] = cell;
        }

        std::string notes;
        bool slow = false;
        bool allocates = false;
        if (parts.op == global_op && ours) {
            slow = *ours > global_limit_seconds;
            allocates = allocations != 0;
            notes = slow || allocates ? "MISS" : "ok";
            if (slow)
                notes += " time";
            if (allocates)
                notes += std::string(slow ? "," : "") + " allocation";
            misses += slow || allocates ? 1 : 0;
        }
        // A plain name must cost no more than ICU's construction and canonicalisation.
        if (parts.op == "createLocale" && parts.which == "plain" && ours) {
            const std::optional<double> icu = time_of(row, "icu");
            slow = icu && *ours > *icu;
            notes = slow ? "MISS vs ICU" : "ok";
            misses += slow ? 1 : 0;
        }
        if (const name_group* group = group_of(parts.which)) {
            for (const char* impl : {"qxi18n", "icu", "glibc"}) {
                const auto found = results_.find(row + "/" + impl);
                if (found == results_.end() || found->second.failing == 0)
                    continue;
                char note[64];
                std::snprintf(note, sizeof note, "%s%s %.0f of %zu", notes.empty() ? "" : ", ", impl,
                              found->second.failing, group->names.size());
                notes += note;
            }
        }
        if (!ours)
            notes = "no result";

        char allocs[16] = "-";
        if (allocations >= 0)
            std::snprintf(allocs, sizeof allocs, "%.1f%s", allocations, allocates ? "!" : "");
        const std::string time = ours ? format_time(*ours) + (slow ? "!" : "") : "-";
        std::snprintf(line, sizeof line, format, parts.op.c_str(), parts.which.c_str(), time.c_str(), allocs,
                      ratios[0].c_str(), ratios[1].c_str(), ratios[2].c_str(), notes.c_str());
        out << line;
    }
    out << "\n" << misses << " of " << rows_.size() << " locale rows miss a target.\n";
    return misses;
}

}  // namespace

void register_locale_benchmarks()
{
    for (const name_group& group : name_groups())
        add_create_rows(group);
    add_global_rows();
    add_conversion_rows();
}

std::unique_ptr<table_family> locale_family()
{
    return std::make_unique<locale_table>();
}

}  // namespace qxbench
