// numpunct_facet<char16_t> and the per-thread std::locale for char16_t streams.
#include <fl/i18n/facet.hpp>
#include <fl/i18n/locale.hpp>

#include <boost/thread/tss.hpp>

#include <algorithm>

namespace fl::i18n::facet {

namespace {

char16_t widen_byte(char c) { return static_cast<char16_t>(static_cast<unsigned char>(c)); }

ustring widen_bytes(const std::string& text)
{
    ustring result(text.size(), u'\0');
    std::transform(text.begin(), text.end(), result.begin(), widen_byte);
    return result;
}

// Each facet is added to a new locale made from the previous one.
std::locale make_thread_locale()
{
    const QxLocale& global = QxLocale::global();
    std::locale result(std::locale::classic(), new ctype_facet<char16_t>(global.getEncoding()));
    result = std::locale(result, new numpunct_facet<char16_t>());
    result = std::locale(result, new std::num_put<char16_t>());
    return std::locale(result, new std::num_get<char16_t>());
}

}  // namespace

numpunct_facet<char16_t>::numpunct_facet(std::size_t refs) : std::numpunct_byname<char16_t>("C", refs)
{
    const auto& classic = std::use_facet<std::numpunct<char>>(std::locale::classic());
    decimal_point_ = widen_byte(classic.decimal_point());
    thousands_sep_ = widen_byte(classic.thousands_sep());
    grouping_ = classic.grouping();
    truename_ = widen_bytes(classic.truename());
    falsename_ = widen_bytes(classic.falsename());
}

numpunct_facet<char16_t>::~numpunct_facet() = default;

char16_t numpunct_facet<char16_t>::do_decimal_point() const { return decimal_point_; }
char16_t numpunct_facet<char16_t>::do_thousands_sep() const { return thousands_sep_; }
std::string numpunct_facet<char16_t>::do_grouping() const { return grouping_; }
ustring numpunct_facet<char16_t>::do_truename() const { return truename_; }
ustring numpunct_facet<char16_t>::do_falsename() const { return falsename_; }

const std::locale& get_global_std_locale()
{
    // Never destroyed, so that a thread ending after static destruction still frees its own
    // locale; each thread's locale goes at that thread's exit.
    static auto* const per_thread = new boost::thread_specific_ptr<std::locale>();
    if (const std::locale* mine = per_thread->get())
        return *mine;
    per_thread->reset(new std::locale(make_thread_locale()));
    return *per_thread->get();
}

}  // namespace fl::i18n::facet
