// Registers the text-engine benchmarks and prints their table: the library beside the raw ICU
// calls that do the same work, and std::wregex for patterns.
#include "text_benchmarks.hpp"

#include "allocation_counter.hpp"
#include "samples.hpp"

#include <fl/i18n/pattern_match.hpp>
#include <fl/i18n/text_compare.hpp>
#include <fl/i18n/transform.hpp>

#include <unicode/ucol.h>
#include <unicode/unorm2.h>
#include <unicode/uregex.h>
#include <unicode/usearch.h>
#include <unicode/ustring.h>
#include <unicode/utrans.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <functional>
#include <locale>
#include <memory>
#include <optional>
#include <regex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace qxbench {
namespace {

namespace fi = fl::i18n;

// The library adds only argument checks around one ICU call, which must stay in the noise.
constexpr double text_icu_ratio_limit = 1.15;

struct script {
    const char* label;
    std::u16string_view sentence;
    std::u16string_view needle;  // absent from the sentence; searched for in upper case
};

constexpr std::u16string_view greek_sentence =
    u"Το πρωί στην Αθήνα οι μαθητές πίνουν καφέ και διαβάζουν ιστορίες για τα νησιά του Αιγαίου. ";

// The accented prose and the Japanese of the conversion benchmarks, and a Greek sentence with tonos.
const std::array<script, 3>& scripts()
{
    static const std::array<script, 3> list{{
        {"latin", utf8_texts()[1].sentence, u"Zoë Ångström"},
        {"greek", greek_sentence, u"Ψυχή Ξένου"},
        {"cjk", utf8_texts()[2].sentence, u"鳳凰城の灯台"},
    }};
    return list;
}

struct unit_size {
    std::size_t units;  // UTF-16 code units
    const char* label;
};

constexpr std::array<unit_size, 3> unit_sizes{{{16, "16u"}, {1024, "1Ku"}, {64 * 1024, "64Ku"}}};
constexpr unit_size short_subject{0, "short"};

// Texts up to the library's stack buffer have an allocation target; longer ones are shown only.
constexpr std::size_t allocation_target_units = 1024;

// --- inputs and raw ICU ---

void check(UErrorCode status, const char* what)
{
    if (U_FAILURE(status))
        throw std::runtime_error(std::string(what) + ": " + u_errorName(status));
}

int32_t length_of(std::u16string_view text)
{
    return static_cast<int32_t>(text.size());
}

// The sentence repeated to exactly `units` code units; every sentence stays in the BMP.
ustring repeated(std::u16string_view sentence, std::size_t units)
{
    ustring text;
    text.reserve(units);
    while (text.size() < units)
        text.append(sentence.substr(0, units - text.size()));
    return text;
}

// ICU's buffer protocol as a careful caller writes it: a stack buffer of 1024 units first, a
// second pass into the result only when the output is longer.
template <class Call>
ustring icu_transform(Call call)
{
    constexpr int32_t inline_capacity = 1024;
    char16_t buffer[inline_capacity];
    UErrorCode status = U_ZERO_ERROR;
    const int32_t needed = call(buffer, inline_capacity, &status);
    if (status == U_BUFFER_OVERFLOW_ERROR) {
        ustring result(static_cast<std::size_t>(needed), u'\0');
        status = U_ZERO_ERROR;
        call(result.data(), needed, &status);
        check(status, "ICU transform");
        return result;
    }
    check(status, "ICU transform");
    return ustring(buffer, static_cast<std::size_t>(needed));
}

ustring icu_upper(const ustring& text)
{
    return icu_transform([&text](char16_t* dest, int32_t capacity, UErrorCode* status) {
        return u_strToUpper(dest, capacity, text.data(), length_of(text), "", status);
    });
}

// The normaliser singletons are fetched once, as a caller that keeps them would.
template <const UNormalizer2* (*Instance)(UErrorCode*)>
ustring icu_normalize(const ustring& text)
{
    static const UNormalizer2* const normalizer = [] {
        UErrorCode status = U_ZERO_ERROR;
        const UNormalizer2* instance = Instance(&status);
        check(status, "unorm2 instance");
        return instance;
    }();
    return icu_transform([&text](char16_t* dest, int32_t capacity, UErrorCode* status) {
        return unorm2_normalize(normalizer, text.data(), length_of(text), dest, capacity, status);
    });
}

struct utrans_closer {
    void operator()(UTransliterator* t) const noexcept { utrans_close(t); }
};
using transliterator_ptr = std::unique_ptr<UTransliterator, utrans_closer>;

// Opened once; every call transliterates with its own clone, which is what makes it thread-safe.
UTransliterator* shared_transliterator()
{
    static const transliterator_ptr shared = [] {
        constexpr std::u16string_view rule = u"any-NFD; [:Nonspacing_Mark:] any-Remove; any-NFC";
        UErrorCode status = U_ZERO_ERROR;
        transliterator_ptr opened(
            utrans_openU(rule.data(), length_of(rule), UTRANS_FORWARD, nullptr, 0, nullptr, &status));
        check(status, "utrans_openU");
        return opened;
    }();
    return shared.get();
}

ustring icu_no_diacritics(const ustring& source)
{
    ustring text = source;
    UErrorCode status = U_ZERO_ERROR;
    const transliterator_ptr clone(utrans_clone(shared_transliterator(), &status));
    check(status, "utrans_clone");
    const int32_t capacity = length_of(text);
    int32_t length = capacity;
    int32_t limit = capacity;
    utrans_transUChars(clone.get(), text.data(), &length, capacity, 0, &limit, &status);
    check(status, "utrans_transUChars");
    text.resize(static_cast<std::size_t>(length));
    return text;
}

// u_strCaseCompare and unorm_compare share one signature: two texts, options, status.
using icu_comparison = int32_t (*)(const UChar*, int32_t, const UChar*, int32_t, uint32_t, UErrorCode*);

template <icu_comparison Compare, uint32_t Options>
int icu_compare(const ustring& a, const ustring& b)
{
    UErrorCode status = U_ZERO_ERROR;
    const int order = Compare(a.data(), length_of(a), b.data(), length_of(b), Options, &status);
    check(status, "ICU comparison");
    return order;
}

struct ucol_closer {
    void operator()(UCollator* c) const noexcept { ucol_close(c); }
};
struct usearch_closer {
    void operator()(UStringSearch* s) const noexcept { usearch_close(s); }
};
struct uregex_closer {
    void operator()(URegularExpression* r) const noexcept { uregex_close(r); }
};
using collator_ptr = std::unique_ptr<UCollator, ucol_closer>;
using search_ptr = std::unique_ptr<UStringSearch, usearch_closer>;
using regex_ptr = std::unique_ptr<URegularExpression, uregex_closer>;

// A root collator of secondary strength: case is ignored, accents are not, as in an upper-cased
// search. The collator is made once; each search is opened on the call's texts, as find is.
collator_ptr secondary_collator()
{
    UErrorCode status = U_ZERO_ERROR;
    collator_ptr collator(ucol_open("", &status));
    check(status, "ucol_open");
    ucol_setStrength(collator.get(), UCOL_SECONDARY);
    return collator;
}

int32_t icu_search(const UCollator* collator, const ustring& haystack, const ustring& needle)
{
    UErrorCode status = U_ZERO_ERROR;
    const search_ptr search(usearch_openFromCollator(needle.data(), length_of(needle), haystack.data(),
                                                     length_of(haystack), collator, nullptr, &status));
    check(status, "usearch_openFromCollator");
    const int32_t position = usearch_first(search.get(), &status);
    check(status, "usearch_first");
    return position;
}

// --- registration ---


// Times `call`, whose answer the caller has checked, counting operator new calls per call; a
// limit of 0 or more becomes the row's allocation target.
template <class Call>
void time_calls(benchmark::State& state, Call&& call, double allocation_limit = -1)
{
    const std::uint64_t before = allocations_on_this_thread();
    for (auto _ : state) {
        auto result = call();
        if constexpr (std::is_same_v<decltype(result), ustring>)
            benchmark::DoNotOptimize(result.data());
        else
            benchmark::DoNotOptimize(result);
        benchmark::ClobberMemory();
    }
    count_allocations(state, before);
    if (allocation_limit >= 0)
        state.counters["alloc_limit"] = allocation_limit;
}

// None beyond the result, and that one only when the result does not fit the inline buffer.
double limit_for(std::size_t source_units, std::size_t result_units)
{
    if (source_units > allocation_target_units)
        return -1;
    return result_units > ustring().capacity() ? 1 : 0;
}

std::string row_of(const char* op, const char* text, const unit_size& size)
{
    return std::string(op) + "/" + text + "/" + size.label;
}

template <class Tag>
void add_transform_rows(const char* op, ustring (*icu)(const ustring&), const script& text, unit_size size)
{
    const std::string row = row_of(op, text.label, size);
    register_row(row, "qxi18n", [&text, size, icu](benchmark::State& state) {
        const ustring source = repeated(text.sentence, size.units);
        auto call = [&source] {
            using foundation::ustring::detail::do_transform_impl;
            return do_transform_impl<char16_t, Tag>(source.data(), source.size(), Tag{});
        };
        const ustring expected = icu(source);
        if (call() != expected)
            return state.SkipWithError("result differs from raw ICU");
        time_calls(state, call, limit_for(source.size(), expected.size()));
    });
    register_row(row, "icu", [&text, size, icu](benchmark::State& state) {
        const ustring source = repeated(text.sentence, size.units);
        time_calls(state, [&source, icu] { return icu(source); });
    });
}

// The text against its upper-case form, equal under case folding, so both sides read all of it.
template <class Tag>
void add_compare_rows(const char* op, int (*icu)(const ustring&, const ustring&), const script& text,
                      unit_size size)
{
    const std::string row = row_of(op, text.label, size);
    register_row(row, "qxi18n", [&text, size](benchmark::State& state) {
        const ustring a = repeated(text.sentence, size.units);
        const ustring b = icu_upper(a);
        auto call = [&a, &b] { return fi::detail::compare(a.data(), a.size(), b.data(), b.size(), Tag{}); };
        if (call() != 0)
            return state.SkipWithError("the upper-case copy compares unequal");
        time_calls(state, call, size.units <= allocation_target_units ? 0 : -1);
    });
    register_row(row, "icu", [&text, size, icu](benchmark::State& state) {
        const ustring a = repeated(text.sentence, size.units);
        const ustring b = icu_upper(a);
        if (icu(a, b) != 0)
            return state.SkipWithError("the upper-case copy compares unequal");
        time_calls(state, [&a, &b, icu] { return icu(a, b); });
    });
}

// The needle sits two units before the end of the haystack, its only occurrence, and is looked
// for in upper case.
struct search_case {
    ustring haystack;
    ustring needle;
    std::size_t position;  // of the needle in the haystack as given
};

search_case search_case_for(const script& text, std::size_t units)
{
    const std::size_t tail = 2;
    search_case c;
    c.position = units - text.needle.size() - tail;
    c.haystack = repeated(text.sentence, c.position);
    c.haystack += text.needle;
    c.haystack += text.sentence.substr(0, tail);
    c.needle = icu_upper(ustring(text.needle));
    return c;
}

void add_find_rows(const script& text, unit_size size)
{
    const std::string row = row_of("find<case_insensitive>", text.label, size);
    register_row(row, "qxi18n", [&text, size](benchmark::State& state) {
        const search_case c = search_case_for(text, size.units);
        auto call = [&c] { return fi::detail::find(c.haystack, c.needle, fi::case_insensitive{}); };
        if (call() == fi::detail::npos)
            return state.SkipWithError("needle not found");
        time_calls(state, call, size.units <= allocation_target_units ? 0 : -1);
    });
    register_row(row, "icu", [&text, size](benchmark::State& state) {
        const search_case c = search_case_for(text, size.units);
        const collator_ptr collator = secondary_collator();
        auto call = [&c, &collator] { return icu_search(collator.get(), c.haystack, c.needle); };
        if (call() != static_cast<int32_t>(c.position))
            return state.SkipWithError("usearch found another position");
        time_calls(state, call);
    });
}

struct pattern_case {
    const char* label;
    std::u16string_view pattern;
    ustring subject;
};

// A file-name wildcard and a character class, each on a short subject and on one of 1024 units.
std::vector<pattern_case> pattern_cases(bool long_subject)
{
    constexpr std::u16string_view wildcard = u"report_.*\\.txt";
    constexpr std::u16string_view char_class = u"[[:alpha:]]+[0-9]{2,4}";
    if (!long_subject)
        return {{"wildcard", wildcard, u"report_2024-06_quarterly summary (final).txt"},
                {"class", char_class, u"Ångströmsvägen2024"}};
    const ustring prefix = u"report_";
    const ustring suffix = u".txt";
    const ustring digits = u"2024";
    const std::size_t units = allocation_target_units;
    const ustring prose = repeated(scripts()[0].sentence, units - prefix.size() - suffix.size());
    return {{"wildcard", wildcard, prefix + prose + suffix},
            {"class", char_class, repeated(u"Ångströmsvägen", units - digits.size()) + digits}};
}

// Every character is in the BMP, so one unit widens to one wchar_t.
std::wstring widened(std::u16string_view text)
{
    return std::wstring(text.begin(), text.end());
}

void add_pattern_rows(const pattern_case& p, unit_size size)
{
    const std::string row = row_of("pattern_match::match", p.label, size);
    register_row(row, "qxi18n", [p](benchmark::State& state) {
        const fi::pattern_match matcher(ustring(p.pattern),
                                        fi::character_handling_mode_context(
                                            fi::character_handling_mode_context::default_mode));
        auto call = [&matcher, &p] { return matcher.match(p.subject); };
        if (!call())
            return state.SkipWithError("subject does not match");
        time_calls(state, call, p.subject.size() <= allocation_target_units ? 0 : -1);
    });
    register_row(row, "icu", [p](benchmark::State& state) {
        UErrorCode status = U_ZERO_ERROR;
        const regex_ptr regex(
            uregex_open(p.pattern.data(), length_of(p.pattern), UREGEX_DOTALL, nullptr, &status));
        check(status, "uregex_open");
        auto call = [&regex, &p] {
            UErrorCode match_status = U_ZERO_ERROR;
            uregex_setText(regex.get(), p.subject.data(), length_of(p.subject), &match_status);
            const bool matched = uregex_matches(regex.get(), -1, &match_status) != 0;
            check(match_status, "uregex_matches");
            return matched;
        };
        if (!call())
            return state.SkipWithError("subject does not match");
        time_calls(state, call);
    });
    // UTF-32 copies made before timing; the C.UTF-8 locale gives [[:alpha:]] the Unicode letters.
    register_row(row, "std_regex", [p](benchmark::State& state) {
        std::wregex regex;
        regex.imbue(std::locale("C.UTF-8"));
        regex.assign(widened(p.pattern));
        const std::wstring subject = widened(p.subject);
        auto call = [&regex, &subject] { return std::regex_match(subject, regex); };
        if (!call())
            return state.SkipWithError("subject does not match");
        time_calls(state, call);
    });
}

// --- the table ---

bool is_text_row(const std::string& name)
{
    for (const char* prefix : {"transform<", "compare<", "find<", "pattern_match::"})
        if (name.rfind(prefix, 0) == 0)
            return true;
    return false;
}

bool has_icu_target(const std::string& row)
{
    return row.rfind("transform<", 0) == 0 || row.rfind("compare<", 0) == 0;
}

int print_text_table(const cpu_run_table& table, std::ostream& out)
{
    auto time_of = [&table](const std::string& row, const char* impl) { return table.time_of(row, impl); };

    char line[512];
    std::snprintf(line, sizeof line,
                  "\nText rows: qxi18n CPU time per call (best repetition), its operator new calls per call\n"
                  "against the row's limit, and ratio = qxi18n / peer. Sizes are UTF-16 code units; a short\n"
                  "subject is under 50 units. Targets: transform and compare within %.2f of raw ICU at every\n"
                  "size; up to %zu units no allocation beyond a result longer than the inline buffer. The\n"
                  "ratios of find and pattern_match are informational. ! marks a miss.\n\n",
                  text_icu_ratio_limit, allocation_target_units);
    out << line;
    const char* format = "%-36s %-8s %-5s %10s %7s %5s %8s %11s  %s\n";
    std::snprintf(line, sizeof line, format, "operation", "text", "size", "qxi18n", "allocs", "limit", "vs ICU ",
                  "vs wregex ", "targets");
    out << line;

    int misses = 0;
    for (const std::string& row : table.rows()) {
        const std::size_t first = row.find('/');
        const std::size_t last = row.rfind('/');
        const std::optional<double> ours = time_of(row, "qxi18n");
        const auto mine = table.find(row, "qxi18n");

        std::string ratios[2];
        bool slow = false;
        const char* peer_keys[] = {"icu", "std_regex"};
        for (std::size_t i = 0; i < 2; ++i) {
            const std::optional<double> theirs = time_of(row, peer_keys[i]);
            if (!ours || !theirs) {
                ratios[i] = "- ";
                continue;
            }
            const double ratio = *ours / *theirs;
            const bool miss = i == 0 && has_icu_target(row) && ratio > text_icu_ratio_limit;
            slow = slow || miss;
            // Three digits even for std::regex, which can be a hundred times slower.
            char cell[16];
            std::snprintf(cell, sizeof cell, ratio < 0.1 ? "%.3f%s" : "%.2f%s", ratio, miss ? "!" : " ");
            ratios[i] = cell;
        }

        const allocation_cells cells = allocation_cells_of(mine, 1);
        const std::string verdict = verdict_of(ours.has_value(), slow, "ICU", cells.over, has_icu_target(row));
        misses += slow || cells.over ? 1 : 0;
        std::snprintf(line, sizeof line, format, row.substr(0, first).c_str(),
                      row.substr(first + 1, last - first - 1).c_str(), row.substr(last + 1).c_str(),
                      ours ? format_time(*ours).c_str() : "-", cells.allocs, cells.limit, ratios[0].c_str(),
                      ratios[1].c_str(), verdict.c_str());
        out << line;
    }
    out << "\n" << misses << " of " << table.size() << " text rows miss a target.\n";
    return misses;
}

}  // namespace

void register_text_benchmarks()
{
    for (const script& text : scripts()) {
        for (const unit_size& size : unit_sizes) {
            add_transform_rows<fi::to_upper>("transform<to_upper>", icu_upper, text, size);
            add_transform_rows<fi::to_nfc>("transform<to_nfc>", icu_normalize<unorm2_getNFCInstance>, text, size);
            add_transform_rows<fi::to_nfd>("transform<to_nfd>", icu_normalize<unorm2_getNFDInstance>, text, size);
            add_transform_rows<fi::to_no_diacritics>("transform<to_no_diacritics>", icu_no_diacritics, text,
                                                     size);
        }
    }
    for (const script& text : scripts()) {
        for (const unit_size& size : unit_sizes) {
            add_compare_rows<fi::case_insensitive>("compare<case_insensitive>",
                                                   icu_compare<u_strCaseCompare, U_FOLD_CASE_DEFAULT>, text, size);
            add_compare_rows<fi::normalized_case_insensitive>("compare<normalized_case_insensitive>",
                                                              icu_compare<unorm_compare, U_COMPARE_IGNORE_CASE>,
                                                              text, size);
        }
    }
    for (const script& text : scripts())
        for (const unit_size& size : unit_sizes)
            add_find_rows(text, size);
    for (const pattern_case& p : pattern_cases(false))
        add_pattern_rows(p, short_subject);
    for (const pattern_case& p : pattern_cases(true))
        add_pattern_rows(p, unit_sizes[1]);
}

std::unique_ptr<table_family> text_family()
{
    return cpu_table_family(is_text_row, print_text_table);
}

}  // namespace qxbench
