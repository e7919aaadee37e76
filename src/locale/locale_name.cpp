// Parsing of locale names and their composition back into strings.
#include <fl/i18n/locale_name.hpp>

#include <algorithm>

namespace fl::i18n {
namespace {

// Character classes are ASCII only: a byte above 127 belongs to none of them.
bool is_alpha(char c) noexcept { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }
bool is_digit(char c) noexcept { return c >= '0' && c <= '9'; }
bool is_alnum(char c) noexcept { return is_alpha(c) || is_digit(c); }
bool is_singleton(char c) noexcept { return is_alnum(c) && c != 'x' && c != 'X'; }
bool is_separator(char c) noexcept { return c == '-' || c == '_'; }

template <class Pred>
bool all_of(std::string_view text, Pred pred)
{
    return std::all_of(text.begin(), text.end(), pred);
}

bool is_language(std::string_view text)
{
    return (text.size() == 2 || text.size() == 3) && all_of(text, is_alpha);
}

std::vector<std::string> split(std::string_view text, char separator)
{
    std::vector<std::string> parts;
    for (;;) {
        auto end = text.find(separator);
        parts.emplace_back(text.substr(0, end));
        if (end == std::string_view::npos)
            return parts;
        text.remove_prefix(end + 1);
    }
}

std::string join(const std::vector<std::string>& parts, char separator)
{
    std::string out;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i != 0)
            out += separator;
        out += parts[i];
    }
    return out;
}

// "-x-" first, and "-X-" only when there is no lower-case marker.
bool take_private_use(std::string_view& text, parsed_locale_name& out)
{
    auto at = text.find("-x-");
    if (at == std::string_view::npos)
        at = text.find("-X-");
    if (at == std::string_view::npos)
        return true;
    out.private_singleton.assign(1, text[at + 1]);
    out.private_use = split(text.substr(at + 3), '-');
    for (const auto& piece : out.private_use)
        if (piece.empty() || piece.size() > 8 || !all_of(piece, is_alnum))
            return false;
    text = text.substr(0, at);
    return !text.empty();
}

// One subtag after the language, outside an extension.
bool take_subtag(std::string_view subtag, parsed_locale_name& out)
{
    switch (subtag.size()) {
    case 4:
        if (!all_of(subtag, is_alpha))
            return false;
        out.script.assign(subtag);
        return true;
    case 2:
        if (!all_of(subtag, is_alpha))
            return false;
        out.territory.assign(subtag);
        return true;
    case 3:
        if (!all_of(subtag, is_digit))
            return false;
        out.territory.assign(subtag);
        return true;
    case 5: case 6: case 7: case 8:
        if (!all_of(subtag, is_alnum))
            return false;
        out.variants.emplace_back(subtag);
        return true;
    default:
        return false;
    }
}

bool parse_base(std::string_view text, parsed_locale_name& out)
{
    if (text.empty() || !take_private_use(text, out))
        return false;

    const auto first = std::find_if(text.begin(), text.end(), is_separator);
    const std::string_view language = text.substr(0, static_cast<std::size_t>(first - text.begin()));
    if (!is_language(language))
        return false;
    out.language.assign(language);
    if (first == text.end())
        return true;

    std::string_view rest = text.substr(language.size() + 1);
    char pending = 0;
    for (;;) {
        const auto end = std::find_if(rest.begin(), rest.end(), is_separator);
        const bool last = end == rest.end();
        const std::string_view subtag = rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
        if (last && subtag.size() < 2)
            return false;
        if (subtag.size() == 1) {
            if (pending != 0 || !is_singleton(subtag[0]))
                return false;
            pending = subtag[0];
        } else if (pending != 0) {
            if (subtag.size() > 8 || !all_of(subtag, is_alnum))
                return false;
            out.extensions.push_back({pending, std::string(subtag)});
            pending = 0;
        } else if (!take_subtag(subtag, out)) {
            return false;
        }
        if (last)
            return true;
        rest.remove_prefix(subtag.size() + 1);
    }
}

}  // namespace

parsed_locale_name parse_locale_name(std::string_view name)
{
    parsed_locale_name out;
    if (auto at = name.find('@'); at != std::string_view::npos) {
        out.modifiers = split(name.substr(at + 1), '@');
        name = name.substr(0, at);
    }
    if (auto dot = name.find('.'); dot != std::string_view::npos) {
        out.codeset.assign(name.substr(dot + 1));
        name = name.substr(0, dot);
    }
    if (!parse_base(name, out))
        return {};
    return out;
}

std::string compose_language(const parsed_locale_name& parsed)
{
    std::string out = parsed.language;
    if (!parsed.script.empty())
        out.append(1, '-').append(parsed.script);
    return out;
}

std::string compose_base(const parsed_locale_name& parsed)
{
    std::string out = compose_language(parsed);
    if (!parsed.territory.empty())
        out.append(1, '_').append(parsed.territory);
    return out;
}

std::string compose_with_codeset(const parsed_locale_name& parsed)
{
    std::string out = compose_base(parsed);
    if (!parsed.codeset.empty())
        out.append(1, '.').append(parsed.codeset);
    return out;
}

std::string compose_full(const parsed_locale_name& parsed)
{
    std::string out = compose_with_codeset(parsed);
    for (const auto& modifier : parsed.modifiers)
        out.append(1, '@').append(modifier);
    return out;
}

std::string compose_modifiers(const parsed_locale_name& parsed) { return join(parsed.modifiers, '@'); }

std::string compose_variants(const parsed_locale_name& parsed) { return join(parsed.variants, '-'); }

std::string compose_extras(const parsed_locale_name& parsed)
{
    std::string out;
    for (const auto& extension : parsed.extensions)
        out.append(1, '-').append(1, extension.singleton).append(1, '-').append(extension.value);
    if (!parsed.private_use.empty())
        out.append(1, '-').append(parsed.private_singleton).append(1, '-').append(join(parsed.private_use, '-'));
    return out;
}

std::string_view strip_name(std::string_view name) noexcept
{
    std::size_t end = 0;
    while (end < name.size() && name[end] != '.' && name[end] != '@')
        ++end;
    return name.substr(0, end);
}

}  // namespace fl::i18n
