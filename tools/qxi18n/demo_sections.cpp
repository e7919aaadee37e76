// The sections of `qxi18n demo`; a new section is a function here and a row in `sections`.
#include "cli.hpp"
#include "demo.hpp"

#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion.hpp>
#include <fl/i18n/conversion_error.hpp>
#include <fl/i18n/encoding_names.hpp>
#include <fl/i18n/locale.hpp>
#include <fl/i18n/locale_management.hpp>
#include <fl/i18n/stream_codecvt.hpp>

#include <cstdio>
#include <string>
#include <variant>

namespace qxi18n_tool::demo {

namespace {

using namespace fl::i18n;

struct sample {
    const char* file;
    const char* encoding;
};

const sample round_trip_samples[] = {
    {"french.windows-1252.txt", "windows-1252"}, {"russian.koi8-r.txt", "KOI8-R"},
    {"japanese.shift_jis.txt", "Shift_JIS"},     {"japanese.euc-jp.txt", "EUC-JP"},
    {"chinese.gb18030.txt", "GB18030"},          {"greek.iso-8859-7.txt", "ISO-8859-7"},
    {"mixed.utf-16le-bom.txt", "UTF-16"},
};

// The name and message of a conversion exception, as a reader of the demo should see them.
std::string describe(const CvtExceptionBase& e)
{
    const char* name = e.get_id() == cvt_invalid_character ? "CvtInvalidCharacter"
                       : e.get_id() == cvt_conversion_failure ? "CvtConversionFailure"
                                                               : "CvtExceptionBase";
    return std::string("throws ") + name + " (\"" + e.what() + "\")";
}

void show_round_trips(const context& ctx)
{
    std::printf("Each sample is read into a ustring with codecvt_string_to_ustring and written\n"
                "back with codecvt_ustring_to_string, both in stop mode.\n\n");
    for (const sample& s : round_trip_samples) {
        const std::string bytes = read_sample(ctx, s.file);
        const codecvt_string_to_ustring decoder(s.encoding, false);
        const codecvt_ustring_to_string encoder(s.encoding, false);
        const ustring text = to_ustring(bytes, decoder);
        const std::string back = to_string(text, encoder);
        std::printf("  %-24s %-13s %4zu bytes -> %4zu UTF-16 units -> %4zu bytes, %s\n", s.file,
                    s.encoding, bytes.size(), text.size(), back.size(),
                    back == bytes ? "identical" : "DIFFERENT");
        std::printf("      %s\n", first_line(text).c_str());
    }
}

void show_same_text(const context& ctx)
{
    const ustring sjis = to_ustring(read_sample(ctx, "japanese.shift_jis.txt"),
                                    codecvt_string_to_ustring("Shift_JIS", false));
    const ustring euc = to_ustring(read_sample(ctx, "japanese.euc-jp.txt"),
                                   codecvt_string_to_ustring("EUC-JP", false));
    std::printf("The two Japanese samples hold one text in two encodings. As ustring they are\n"
                "%s: %zu UTF-16 units each.\n",
                sjis == euc ? "equal" : "NOT equal", sjis.size());
}

void show_byte_order_mark(const context& ctx)
{
    const std::string bytes = read_sample(ctx, "mixed.utf-16le-bom.txt");
    std::printf("mixed.utf-16le-bom.txt starts with the bytes FF FE.\n\n");
    for (const char* encoding : {"UTF-16", "UTF-16LE", "UTF-16BE"}) {
        const ustring text = to_ustring(bytes, codecvt_string_to_ustring(encoding, true));
        std::printf("  read as %-9s %3zu units, the first is U+%04X\n", encoding, text.size(),
                    static_cast<unsigned>(text.empty() ? 0 : text[0]));
    }
    std::printf("\n\"UTF-16\" takes the byte order from the mark and drops it; \"UTF-16LE\" keeps\n"
                "it as U+FEFF; \"UTF-16BE\" reads every unit backwards.\n");
}

void show_error_modes(const context& ctx)
{
    const ustring text = to_ustring(read_sample(ctx, "beyond-latin1.utf-8.txt"),
                                    codecvt_string_to_ustring("UTF-8", false));
    std::printf("beyond-latin1.utf-8.txt written as ISO-8859-1 (Latin-1 shown as UTF-8 here):\n\n"
                "  %-15s%s\n", "text", first_line(text).c_str());
    const ustring line = text.substr(0, text.find(u'\n'));
    for (const auto& m : error_modes) {
        std::string shown;
        try {
            shown = show_latin1(to_string(line, codecvt_ustring_to_string(m.mode, "ISO-8859-1", "")));
        } catch (const CvtExceptionBase& e) {
            shown = describe(e);
        }
        std::printf("  %-15s%s\n", m.name, shown.c_str());
    }
    std::printf("\nWith cvt_call_back_substitute the caller picks the bytes: \"?\" gives\n  %-15s%s\n",
                "", show_latin1(to_string(line, codecvt_ustring_to_string(cvt_call_back_substitute,
                                                                          "ISO-8859-1", "?")))
                        .c_str());
}

void show_malformed_input(const context& ctx)
{
    const std::string bytes = read_sample(ctx, "malformed.utf-8.txt");
    const codecvt_string_to_ustring strict("UTF-8", false);
    const codecvt_string_to_ustring lenient("UTF-8", true);
    std::printf("malformed.utf-8.txt read line by line as UTF-8, strict and lenient:\n\n");
    std::size_t number = 0;
    for (std::size_t start = 0; start < bytes.size(); ++number) {
        const std::size_t end = std::min(bytes.find('\n', start), bytes.size());
        const std::string line = bytes.substr(start, end - start);
        start = end + 1;
        try {
            to_ustring(line, strict);
            std::printf("  line %zu  ok\n", number + 1);
        } catch (const CvtExceptionBase& e) {
            std::printf("  line %zu  %s\n", number + 1, describe(e).c_str());
            std::printf("          lenient: %s\n",
                        ustring_to_utf8(to_ustring(line, lenient)).c_str());
        }
    }
    const std::string truncated = "ends inside a character: \xE2\x82";
    std::string strict_result;
    try {
        to_ustring(truncated, strict);
        strict_result = "accepted";
    } catch (const CvtExceptionBase& e) {
        strict_result = describe(e);
    }
    std::printf("\nA text that ends inside a character (E2 82, two bytes of three):\n"
                "  strict  %s\n  lenient %s\n", strict_result.c_str(),
                ustring_to_utf8(to_ustring(truncated, lenient)).c_str());
    // A streaming converter keeps the partial character for the next piece instead.
    const stream_codecvt_string_to_ustring stream("UTF-8", false);
    const std::string pieces[] = {"\xE2\x82", "\xAC!"};
    char16_t units[8];
    char16_t* out = units;
    for (const std::string& piece : pieces) {
        const char* next = piece.data();
        stream.convert(&out, units + 8, &next, next + piece.size(), &piece == &pieces[1]);
    }
    std::printf("  fed to stream_codecvt_string_to_ustring as E2 82 | AC 21: %s\n",
                ustring_to_utf8(ustring(units, out)).c_str());
    std::printf("\n'qxi18n convert -f UTF-8 -t UTF-8 malformed.utf-8.txt' streams the file this way,\n"
                "writes lines 1 and 2, then reports\n"
                "\"malformed.utf-8.txt:3: invalid or unmappable character sequence\".\n");
}

void show_locales(const context&)
{
    std::printf("QxLocale::createLocale canonicalises a name through the compiled-in tables; the\n"
                "encoding comes from the codeset when there is one, else from the table, and\n"
                "get_fallback_locales cuts the messages category at each \"_\".\n\n");
    std::printf("  %-18s %-12s %-11s %-11s %s\n", "name", "canonical", "encoding", "default",
                "fallback chain");
    for (const char* name : {"de_DE.UTF-8@euro", "C", "zh_HK", "ja_JP.eucjp", "sr-Latn_BA", "xx_YY"}) {
        try {
            const auto locale = QxLocale::createLocale(name);
            std::string chain;
            for (const ustring& step : get_fallback_locales(*locale))
                chain.append(chain.empty() ? "" : " -> ").append(ustring_to_utf8(step));
            std::printf("  %-18s %-12s %-11s %-11s %s\n", name,
                        locale->getName(QxLocale::lc_ctype).c_str(), locale->getEncoding().c_str(),
                        locale->getDefaultEncoding().c_str(), chain.c_str());
        } catch (const QxLcMgmtExceptionBase& e) {
            // The identifier is "fl:i18n:" and the class name.
            const std::string& id = e.getIdentifier();
            std::printf("  %-18s throws %s (\"%s\", detail \"%s\")\n", name,
                        id.substr(id.rfind(':') + 1).c_str(), e.what(), e.getDetail().c_str());
        }
    }
    std::printf("\n\"C\" is en_US_POSIX in every category but messages, which is en_US: the\n"
                "chain starts there. 'qxi18n locale NAME' shows every category of a name.\n");
}

void show_encoding_names(const context&)
{
    std::printf("get_standard_encoding_name gives each of the many names of an encoding one\n"
                "spelling: the library's own for the encodings it lists, ICU's preferred name for\n"
                "the others, and nothing for a name that neither knows.\n\n");
    std::printf("  %-19s %-14s %-10s %s\n", "name", "standard", "supported", "JVM name");
    for (const char* name : {"Cp1252", "1252", "eucjp", "UTF8", "MS932", "TIS620", "latin1", "ibm-5348_P100-1997",
                             "ISO-2022-JP", "no-such-encoding"}) {
        const std::string standard = get_standard_encoding_name(name);
        const std::string jvm = jvm_encoding_name(standard);
        std::printf("  %-19s %-14s %-10s %s\n", name, standard.empty() ? "(unknown)" : standard.c_str(),
                    lcmgmt::is_supported_encoding(name) ? "yes" : "no", jvm.empty() ? "-" : jvm.c_str());
    }
    std::printf("\nListed names are matched ignoring ASCII case, without asking ICU (which takes\n"
                "\"1252\" for no encoding at all); \"latin1\" and \"ibm-5348_P100-1997\" are ICU's\n"
                "names of listed encodings. ISO-2022-JP converts, but the library does not list it.\n"
                "'qxi18n encoding NAME' shows one name in full.\n");
}

void show_start_up(const context&)
{
    std::printf("The tool called fl::i18n::initialize() first, as a host does: the user's LANG and\n"
                "LC_* became the system locale, the environment was rewritten to match, and the\n"
                "global locale was pushed with numbers always in en_US_POSIX.\n\n");
    const QxLocale& system = QxLocale::system();
    const QxLocale& global = QxLocale::global();
    std::printf("  status             %d, %s\n", QxLcUtil::getLcStatus(), QxLcUtil::getInitStatusMsg().c_str());
    std::printf("  %-18s %-14s %s\n", "category", "system", "global");
    for (const auto category : {QxLocale::lc_ctype, QxLocale::lc_numeric, QxLocale::lc_messages})
        std::printf("  %-18s %-14s %s\n", QxLocale::getLcCategoryName(category).c_str(),
                    system.getName(category).c_str(), global.getName(category).c_str());
    std::printf("  %-18s %-14s %s\n", "encoding", system.getEncoding().c_str(), global.getEncoding().c_str());
    std::printf("  %-18s %s\n", "terminal encoding",
                std::get<std::string>(system.getLocaleData(QxLcOptDataCtx::termencoding)).c_str());
    const auto paths = QxLcUtil::getDataPathNames();
    std::printf("  %-18s %s\n", "locale database",
                paths.empty() ? "(none)" : paths.begin()->second.c_str());
    std::printf("\nThe library's own encoding is UTF-8 whatever the user's codeset; that codeset is\n"
                "kept as the terminal encoding. Try 'LANG=de_DE.ISO-8859-1 qxi18n info'.\n");
}

}  // namespace

const section sections[] = {
    {"Round trips through ustring", show_round_trips},
    {"One text, two encodings", show_same_text},
    {"Byte order marks", show_byte_order_mark},
    {"Characters that Latin-1 cannot hold", show_error_modes},
    {"Malformed input", show_malformed_input},
    {"Locales", show_locales},
    {"Encoding names", show_encoding_names},
    {"Charset detection", show_detection},
    {"Start-up", show_start_up},
    {"Text engine", show_text_engine},
    {"Files and directories", show_files},
    {"Dates, times and time zones", show_time},
};
const std::size_t section_count = sizeof sections / sizeof sections[0];

}  // namespace qxi18n_tool::demo
