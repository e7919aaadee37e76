// Fallback chains: a locale's messages name cut at each "_", most specific first.
#include <fl/i18n/locale.hpp>

namespace fl::i18n {
namespace {

// Locale names are ASCII by their grammar, so widening byte by byte is exact.
ustring widen(const std::string& text) { return ustring(text.begin(), text.end()); }

std::vector<ustring> fallback_chain(const ustring& name, const ustring& default_name)
{
    std::vector<ustring> chain{name};
    ustring current = name;
    while (!current.empty()) {
        const auto cut = current.rfind(u'_');
        if (cut == ustring::npos)
            break;
        current.resize(cut);
        chain.push_back(current);
    }
    if (chain.back() != default_name)
        chain.push_back(default_name);
    return chain;
}

}  // namespace

std::vector<ustring> get_fallback_locales(const QxLocale& locale)
{
    static const ustring classic_language = widen(QxLocale::classic().getLanguage(QxLocale::lc_messages, 0));
    return fallback_chain(widen(locale.getName(QxLocale::lc_messages)), classic_language);
}

std::vector<ustring> get_fallback_locales_with_empty_default(const QxLocale& locale)
{
    return fallback_chain(widen(locale.getName(QxLocale::lc_messages)), ustring());
}

}  // namespace fl::i18n
