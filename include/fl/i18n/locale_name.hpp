// The grammar of locale names: the parts of a name, and how they are written back.
#pragma once

#include <fl/i18n/export.hpp>

#include <string>
#include <string_view>
#include <vector>

namespace fl::i18n {

/// One extension of a locale name: a one-character singleton and its value ("u", "co").
struct locale_extension {
    char singleton = 0;
    std::string value;
};

/// The parts of a locale name, letter case as given. All fields empty means "not valid".
struct parsed_locale_name {
    std::string language;
    std::string script;
    std::string territory;
    std::string codeset;                 ///< after "."
    std::vector<std::string> modifiers;  ///< after "@", split at each "@"
    std::vector<std::string> variants;   ///< subtags of 5 to 8 letters or digits
    std::vector<locale_extension> extensions;
    std::string private_singleton;  ///< "x" or "X" when there is a private-use part
    std::vector<std::string> private_use;

    bool valid() const noexcept { return !language.empty(); }
};

/// Splits "language[-Script][_TERRITORY][-variant][-s-ext][-x-private][.codeset][@modifier...]";
/// "-" and "_" are interchangeable. Returns an all-empty record for a name outside the grammar.
/// Pure, and safe on untrusted input: only ASCII letters and digits form subtags.
QXI18N_API parsed_locale_name parse_locale_name(std::string_view name);

/// language["-" script]["_" territory]
QXI18N_API std::string compose_base(const parsed_locale_name& parsed);
/// compose_base["." codeset]
QXI18N_API std::string compose_with_codeset(const parsed_locale_name& parsed);
/// compose_with_codeset, then "@" and each modifier
QXI18N_API std::string compose_full(const parsed_locale_name& parsed);
/// language["-" script]
QXI18N_API std::string compose_language(const parsed_locale_name& parsed);
/// The modifiers joined by "@", no leading "@".
QXI18N_API std::string compose_modifiers(const parsed_locale_name& parsed);
/// The variants joined by "-".
QXI18N_API std::string compose_variants(const parsed_locale_name& parsed);
/// "-" singleton "-" value for each extension, then "-" x "-" and the private-use subtags.
QXI18N_API std::string compose_extras(const parsed_locale_name& parsed);

/// The part of a name before the first "." or "@".
QXI18N_API std::string_view strip_name(std::string_view name) noexcept;

}  // namespace fl::i18n
