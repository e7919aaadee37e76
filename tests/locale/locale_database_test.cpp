// The locale database reader: its grammar, what each element writes into the registry and logs,
// the chunked file loop, hostile files, and the database that ships with the library.
#include "locale/locale_database.hpp"
#include "locale/locale_name.hpp"

#include <fl/i18n/locale_database_error.hpp>

#include <boost/exception/exception.hpp>
#include <expat.h>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace {

using namespace fl::i18n;
using detail::locale_registry;
namespace stdfs = std::filesystem;
using strings = std::vector<std::string>;

// A directory of its own for each test, removed with everything in it.
class scratch_dir {
public:
    scratch_dir()
    {
        // mkdtemp replaces the six trailing capitals.
        std::string pattern = (stdfs::temp_directory_path() / "qxi18n_lcdata_").string() + std::string(6, 'X');
        if (mkdtemp(pattern.data()) == nullptr)
            throw std::runtime_error("mkdtemp failed for " + pattern);
        path_ = pattern;
    }
    ~scratch_dir() { std::error_code ignored; stdfs::remove_all(path_, ignored); }
    std::string file(const std::string& name) const { return (path_ / name).string(); }
    std::string write(const std::string& name, const std::string& content) const
    {
        std::ofstream(file(name), std::ios_base::binary) << content;
        return file(name);
    }
    const stdfs::path& path() const { return path_; }

private:
    stdfs::path path_;
};

// What one load left: a registry of its own, the event log, and the failure if there was one.
struct load_result {
    std::unique_ptr<locale_registry> registry = std::make_unique<locale_registry>();
    strings log;
    int code = 0;
    std::string message;
};

load_result load_file(const std::string& path)
{
    load_result result;
    try {
        detail::load_locale_database(*result.registry, result.log, path);
    } catch (const LcRscExceptionBase& failure) {
        result.code = failure.getCode();
        result.message = failure.getMessage();
        // Each code has its own class and identifier, and every one travels in Boost's wrapper.
        const bool typed = (result.code == 2 && dynamic_cast<const LcRscOpenFileFailure*>(&failure)) ||
                           (result.code == 3 && dynamic_cast<const LcRscFileReadFailure*>(&failure)) ||
                           (result.code == 5 && dynamic_cast<const LcRscInvalidXmlDoc*>(&failure));
        const char* const names[] = {"", "", "OpenFileFailure", "FileReadFailure", "", "InvalidXmlDoc"};
        EXPECT_TRUE(typed && dynamic_cast<const boost::exception_detail::clone_base*>(&failure)) << result.message;
        EXPECT_EQ(failure.getIdentifier(), std::string("fl:i18n:LcRsc") + names[typed ? result.code : 0]);
        EXPECT_STREQ(static_cast<const std::exception&>(failure).what(), result.message.c_str());
    }
    return result;
}

load_result load_text(const std::string& document)
{
    const scratch_dir dir;
    return load_file(dir.write("lcdata.xml", document));
}

std::string in_lcdata(const std::string& body) { return "<lcdata>" + body + "</lcdata>"; }
std::string in_codeset(const std::string& body) { return in_lcdata("<codeset>" + body + "</codeset>"); }
std::string german(const std::string& children) { return "<locale name='de_DE'>" + children + "</locale>"; }
const std::string qx_a = german("<alias name='qx_a'/>");

std::string xml_error(XML_Error code, XML_Size column, XML_Size line)
{
    return std::string("XML Parse error detected with ") + XML_ErrorString(code) + " at column, " +
           std::to_string(column) + ", on line, " + std::to_string(line) + " in resource file.";
}

// What the reader must report for a document, from plain Expat fed the whole text at once.
std::string expat_message(const std::string& document)
{
    const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreate("UTF-8"), XML_ParserFree);
    if (XML_Parse(parser.get(), document.data(), static_cast<int>(document.size()), XML_TRUE) != XML_STATUS_ERROR)
        return "well-formed";
    return xml_error(XML_GetErrorCode(parser.get()), XML_GetCurrentColumnNumber(parser.get()),
                     XML_GetCurrentLineNumber(parser.get()));
}

bool is_aborted(const std::string& message)
{
    return message.rfind(std::string("XML Parse error detected with ") + XML_ErrorString(XML_ERROR_ABORTED) +
                         " at column, ", 0) == 0;
}

TEST(LcdbEventHandler, stops_on_documents_outside_the_grammar)
{
    // Whether the load stops, and whether the alias read before any stop stays. Any element of
    // the grammar may be the root; a nested element of the same name is not pushed, so its end
    // closes the outer one.
    const std::tuple<const char*, std::string, bool, bool> cases[] = {
        {"names are case-sensitive", "<LCDATA>" + qx_a + "</LCDATA>", true, false},
        {"locale without codes", in_lcdata("<locale name='xx_YY'/>"), false, false},
        {"locale without a name", in_lcdata(qx_a + "<locale encoding='UTF-8'/>" + german("<alias name='qx_b'/>")),
         true, true},
        {"alias under lcdata", in_lcdata("<alias name='qx_a'/>"), true, false},
        {"locale as root", qx_a, false, true},
        {"declared utf-8", "<?xml version='1.0' encoding='utf-8'?>" + in_lcdata(qx_a), false, true},
        {"declared ISO-8859-1", "<?xml version='1.0' encoding='ISO-8859-1'?>" + in_lcdata(qx_a), true, false},
        {"declaration without encoding", "<?xml version='1.0'?>" + in_lcdata(qx_a), false, true},
        {"unknown element", in_lcdata(qx_a + "<locales/>"), true, true},
        {"unknown attributes, root attributes and text",
         "<lcdata version='9'>text<locale name='de_DE' colour='red'>more<alias name='qx_a' extra=''/>"
         "</locale>tail</lcdata>", false, true},
        {"empty optional attributes", in_lcdata("<locale name='de_DE' encoding='' xpg_name=''/>" + qx_a), false,
         true},
        {"empty locale name", in_lcdata(qx_a + "<locale name=''/>"), true, true},
        {"empty alias name", in_lcdata(qx_a + german("<alias name=''/>")), true, true},
        {"empty region alias name", in_lcdata(qx_a + german("<region_alias name=''/>")), true, true},
        {"empty l10n value", in_lcdata(qx_a + german("<l10n disable=''/>")), true, true},
        {"empty encoding name", in_lcdata(qx_a + "<codeset><encoding name=''/></codeset>"), true, true},
        {"empty encoding alias",
         in_lcdata(qx_a + "<codeset><encoding name='UTF-8'><encoding_alias name=''/></encoding></codeset>"), true,
         true},
        {"encoding alias without an encoding", "<encoding_alias name='qx_enc'/>", true, false},
        {"locale in locale", in_lcdata("<locale name='fr_FR'>" + qx_a + "</locale>"), true, true},
        {"codeset in locale", in_lcdata(german("<codeset/>")), true, false},
        {"encoding under lcdata", in_lcdata("<encoding name='UTF-8'/>"), true, false},
    };
    for (const auto& [what, document, stops, keeps_qx_a] : cases) {
        const load_result r = load_text(document);
        EXPECT_EQ(r.code, stops ? 5 : 0) << what << ": " << r.message;
        EXPECT_TRUE(!stops || is_aborted(r.message)) << what << ": " << r.message;
        EXPECT_EQ(r.registry->find_locale_alias("qx_a") != nullptr, keeps_qx_a) << what;
        EXPECT_EQ(r.log, strings{}) << what;
    }
}

TEST(parse_xml_file, reports_malformed_documents_in_expat_words)
{
    const std::string cases[] = {
        in_lcdata(qx_a + "<locale name='fr"),  // truncated inside a tag
        "<lcdata>\n  " + qx_a + "\n",           // truncated after a tag
        "", "<lcdata></locale>", in_lcdata(qx_a) + "<lcdata/>",
        "<lcdata>\n<locale name='de_DE' name='fr_FR'/>\n</lcdata>", "<lcdata>&undefined;</lcdata>",
        "\xEF\xBB\xBF<lcdata><locale name='\xC3\x28'/></lcdata>",
    };
    for (const std::string& document : cases) {
        const load_result r = load_text(document);
        EXPECT_EQ(r.code, 5) << document;
        EXPECT_EQ(r.message, expat_message(document)) << document;
    }
    // What came before the point where the text broke off stays loaded.
    EXPECT_NE(load_text(cases[0]).registry->find_locale_alias("qx_a"), nullptr);
}

// What the registry answers to "question name", "(null)" for no answer.
std::string ask(const locale_registry& r, const std::string& question)
{
    const std::string kind = question.substr(0, question.find(' ')), name = question.substr(kind.size() + 1);
    if (kind == "canonical")
        return detail::canonical_locale_name(r, name);
    if (kind == "option")
        return r.get_option(name, "disable_l10n");
    const char* answer = kind == "encoding"   ? r.default_encoding_of(name)
                         : kind == "xpg"      ? r.find_xpg_name(name)
                         : kind == "alias"    ? r.find_locale_alias(name)
                         : kind == "region"   ? r.find_region_alias(name)
                         : kind == "standard" ? r.find_standard_encoding(name)
                         : kind == "jvm"      ? r.find_jvm_encoding(name)
                         : kind == "compat"   ? r.find_compat_encoding(name)
                                              : "unknown question";
    return answer ? answer : "(null)";
}

// Each document's writes: the log it leaves (each refusal ends in the registry's code: 2 empty
// input, 3 conflict, 4 not placeable) and what the registry then answers ("question name=answer").
TEST(LcData, elements_write_their_maps_and_log_refusals)
{
    const std::string lc_entry = "LcData::addLcName::modifyLcEntry - ";
    const std::string alias = "LcData::addAliasLcName::modifyLcAliasName - ";
    const std::string encoding = "LcData::addEncodingName::modify", encoding_alias = "LcData::addEncodingAlias::";
    const std::tuple<const char*, std::string, strings, strings> cases[] = {
        {"a new locale needs both codes",
         in_lcdata("<locale name='qx-qq' encoding='latin9' xpg_name='qx_QQ.ISO8859-15'/>"), {},
         {"canonical QX_qq=qx_QQ", "encoding qx_QQ=ISO-8859-15", "xpg qx_QQ=qx_QQ.ISO8859-15",
          "alias qx_qq.iso8859-15=qx_QQ"}},
        {"a new script locale", in_lcdata("<locale name='qx_latn_qq' encoding='UTF-8' xpg_name='qx_QQ@latin'/>"), {},
         {"canonical qx-Latn-QQ=qx-Latn_QQ"}},
        {"only an encoding", in_lcdata("<locale name='cz' encoding='windows-1250'/>"), {},
         {"encoding cs_CZ=windows-1250", "xpg cs_CZ=(null)"}},
        {"only an XPG name", in_lcdata("<locale name='de_DE' xpg_name='de_DE.ISO8859-1'/>"), {},
         {"xpg de-de=de_DE.ISO8859-1", "alias DE_de.iso8859-1=de_DE", "encoding de_DE=ISO-8859-1"}},
        {"both codes on a known locale",
         in_lcdata("<locale name='fr_FR' encoding='ISO-8859-15' xpg_name='fr_FR@euro'/>"), {},
         {"encoding fr_FR=ISO-8859-15", "alias fr_FR@euro=fr_FR"}},
        // The encoding equals the one held, so only the XPG name is asked for, and refused.
        {"a held value counts as not given", in_lcdata("<locale name='de_DE' encoding='iso88591' xpg_name='fr_FR'/>"),
         {"LcData::addLcName::modifyXpgName - de_DE:fr_FR3"}, {}},
        {"a conflict stores nothing", in_lcdata("<locale name='qx_QQ' encoding='UTF-8' xpg_name='it_IT'/>"),
         {lc_entry + "qx_QQ:UTF-8:it_IT3"}, {"canonical qx_QQ="}},
        {"an unknown locale with one code",
         in_lcdata("<locale name='xx_YY' encoding='UTF-8'/><locale name='xx_YY' xpg_name='xx'/>"),
         {"LcData::addLcName::modifyDefEncoding - xx_YY:UTF-84", "LcData::addLcName::modifyXpgName - xx_YY:xx4"}, {}},
        {"names the registry cannot place",
         in_lcdata("<locale name='xx_YY' encoding='no-such-encoding' xpg_name='xx'/>"
                   "<locale name='xx_YY_VARIANT1' encoding='UTF-8' xpg_name='xx'/>"),
         {lc_entry + "xx_YY:no-such-encoding:xx4", lc_entry + "xx_YY_VARIANT1:UTF-8:xx4"}, {}},
        {"aliases", in_lcdata("<locale name='EN_gb'><alias name='qx_english'/><alias name='en'/></locale>"), {},
         {"canonical QX_English=en_GB", "canonical en=en_GB"}},
        {"alias codes", in_lcdata(german("<alias name='fr_FR'/>") + "<locale name='xx_YY'><alias name='qx'/></locale>"),
         {alias + "de_DE:fr_FR3", alias + "xx_YY:qx4"}, {"canonical fr_FR=fr_FR"}},
        {"region aliases",
         in_lcdata("<locale name='de_CH'><region_alias name='de_LI'/><region_alias name='de_ch'/></locale>"),
         {"LcData::addRegionAliasLcName::modifyLcAliasName - de_CH:de_ch3"},
         {"region DE-li=de_CH", "alias de_LI=(null)"}},
        {"l10n flags",
         in_lcdata("<locale name='cz'><l10n disable='L'/></locale><locale name='xx_YY'><l10n disable='L'/></locale>"),
         {"LcData::addL10nFlag::modifyLcOptData - xx_YY:L4"}, {"option cs_CZ=L", "option cz="}},
        {"children of a root without a locale", "<alias name='qx'/>", {alias + ":qx2"}, {}},
        {"an l10n root", "<l10n disable='L'/>", {"LcData::addL10nFlag::modifyLcOptData - :L2"}, {}},
        {"a JVM name reaches every spelling", in_codeset("<encoding name='eucjp' jvm_encoding='EUC_JP'/>"), {},
         {"jvm EUC-JP=EUC_JP", "jvm eucJP=EUC_JP", "standard eucjp=EUC-JP"}},
        {"a compatible encoding", in_codeset("<encoding name='GB18030' compat='936'/>"), {}, {"compat gb18030=GBK"}},
        {"both", in_codeset("<encoding name='Big5HKSCS' jvm_encoding='MS950_HKSCS' compat='Big5'/>"), {},
         {"jvm Big5-HKSCS=MS950_HKSCS", "compat Big5HKSCS=Big5"}},
        {"an encoding only ICU knew", in_codeset("<encoding name='cp437' jvm_encoding='Cp437' compat='ascii'/>"), {},
         {"standard ibm437=IBM437", "standard CP437=IBM437", "jvm IBM437=Cp437", "compat cp437=US-ASCII"}},
        {"held values are no change",
         in_codeset("<encoding name='Big5' jvm_encoding='MS950'><encoding_alias name='950'/></encoding>"), {}, {}},
        {"encoding aliases",
         in_codeset("<encoding name='windows-874'><encoding_alias name='TIS-620'/></encoding>"
                    "<encoding name='cp437'><encoding_alias name='qx-dos-us'/></encoding>"),
         {}, {"standard tis-620=windows-874", "jvm TIS-620=MS874", "standard QX-DOS-US=IBM437",
              "standard ibm437=IBM437"}},
        {"encoding codes",
         in_codeset("<encoding name='no-such-encoding' jvm_encoding='X'/><encoding name='UTF-8' compat='utf8'/>"
                    "<encoding name='UTF-8' jvm_encoding='UTF8' compat='no-such-encoding'/>"
                    "<encoding name='UTF-8'><encoding_alias name='koi8r'/></encoding>"
                    "<encoding name='no-such-encoding'><encoding_alias name='qx'/></encoding>"),
         {encoding + "JvmName - no-such-encoding:X4", encoding + "CompatEncoding - UTF-8:utf83",
          encoding + "EncodingDataEntry - UTF-8:UTF8:no-such-encoding4",
          encoding_alias + "modifyEncodingAlias - UTF-8:koi8r3",
          encoding_alias + "modifyEncodingAlias - no-such-encoding:qx4"},
         {"standard koi8r=KOI8-R", "jvm UTF-8=UTF-8", "standard qx=(null)"}},
    };
    for (const auto& [what, document, log, answers] : cases) {
        SCOPED_TRACE(what);
        const load_result r = load_text(document);
        EXPECT_EQ(r.code, 0) << r.message;
        EXPECT_EQ(r.log, log);
        for (const std::string& answer : answers) {
            const std::string question = answer.substr(0, answer.find('='));
            EXPECT_EQ(question + "=" + ask(*r.registry, question), answer);
        }
    }
}

// Writes that the grammar never lets through empty are refused by the registry all the same.
TEST(locale_registry, database_writes_refuse_empty_inputs)
{
    using detail::alias_kind;
    const std::function<int(locale_registry&)> writes[] = {
        [](locale_registry& r) { return r.modify_lc_entry("de_DE", "UTF-8", ""); },
        [](locale_registry& r) { return r.modify_lc_entry("", "UTF-8", "x"); },
        [](locale_registry& r) { return r.modify_default_encoding("de_DE", ""); },
        [](locale_registry& r) { return r.modify_xpg_name("", "x"); },
        [](locale_registry& r) { return r.modify_alias(alias_kind::locale, "de_DE", ""); },
        [](locale_registry& r) { return r.modify_alias(alias_kind::region, "", "x"); },
        [](locale_registry& r) { return r.modify_option("de_DE", "disable_l10n", ""); },
        [](locale_registry& r) { return r.modify_option("de_DE", "", "L"); },
        [](locale_registry& r) { return r.modify_encoding_entry("UTF-8", "", "GBK"); },
        [](locale_registry& r) { return r.modify_jvm_name("", "x"); },
        [](locale_registry& r) { return r.modify_compat_encoding("UTF-8", ""); },
        [](locale_registry& r) { return r.modify_encoding_alias("", "x"); },
    };
    const strings untouched = {"encoding de_DE=ISO-8859-1", "alias x=(null)", "region x=(null)", "option de_DE=",
                               "jvm UTF-8=UTF-8", "compat UTF-8=(null)"};
    for (std::size_t i = 0; i < std::size(writes); ++i) {
        locale_registry registry;
        EXPECT_EQ(writes[i](registry), detail::write_empty_input) << "write " << i;
        for (const std::string& answer : untouched)
            EXPECT_EQ(answer.substr(0, answer.find('=') + 1) + ask(registry, answer.substr(0, answer.find('='))),
                      answer) << "write " << i;
    }
}

// The database the library ships: every entry applies without a code, and the build tree holds
// a copy where the library looks (bin/ beside lib/).
TEST(shipped_database, loads_without_a_single_refusal)
{
    const std::string source = std::string(QXI18N_TEST_DATA_DIR) + "/bin/lcdata.xml";
    const load_result r = load_file(source);
    ASSERT_EQ(r.code, 0) << r.message;
    EXPECT_EQ(r.log, strings{});
    EXPECT_EQ(ask(*r.registry, "canonical german") + ask(*r.registry, "canonical szl_PL"), "de_DEszl_PL");
    EXPECT_EQ(ask(*r.registry, "standard TIS-620"), "windows-874");
    std::ifstream original(source, std::ios_base::binary);
    std::ifstream staged(std::string(QXI18N_TEST_BINARY_DIR) + "/bin/lcdata.xml", std::ios_base::binary);
    ASSERT_TRUE(staged.is_open());
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(staged), {}),
              std::string(std::istreambuf_iterator<char>(original), {}));
}

// Counts the text the parser hands over, to see that no chunk is lost or read twice.
class text_counter final : public lcmgmt::EventHandler {
public:
    int on_xml_declaration(const char*, const char*, int) override { return 0; }
    int on_start_element(const char*, const char**) override { return 0; }
    int on_character_data(const char*, int length) override
    {
        characters += static_cast<std::size_t>(length);
        return 0;
    }
    int on_end_element(const char*) override { return 0; }
    const std::string& get_encoding() const override { return encoding; }

    std::size_t characters = 0;
    std::string encoding = "UTF-8";
};

TEST(parse_xml_file, reads_every_chunk_once)
{
    const scratch_dir dir;
    for (std::size_t size : {17u, 1023u, 1024u, 1025u, 2048u, 2049u, 5000u}) {
        const std::size_t text = size - in_lcdata("").size();
        const std::string document = in_lcdata(std::string(text, 'a'));
        text_counter counter;
        lcmgmt::parse_xml_file(counter, dir.write("doc.xml", document));
        EXPECT_EQ(counter.characters, text) << size << " bytes";
        // The same length with the last byte cut off: the end is still found to be missing.
        EXPECT_EQ(load_text(document.substr(0, size - 1)).code, 5) << size - 1 << " bytes";
    }
    // Exactly one chunk, read to its end by a second read of nothing, and one byte more.
    for (std::size_t size : {1024u, 1025u}) {
        const std::string document = in_lcdata(std::string(size - in_lcdata(qx_a).size(), '\n') + qx_a);
        ASSERT_EQ(document.size(), size);
        const load_result r = load_text(document);
        EXPECT_EQ(r.code, 0) << r.message;
        EXPECT_NE(r.registry->find_locale_alias("qx_a"), nullptr) << size;
    }
}

// A DOCTYPE with a chain of `length` entities, each the previous one, ending in "de_DE".
std::string entity_chain(std::size_t length, bool in_attribute)
{
    std::string document = "<!DOCTYPE lcdata [\n<!ENTITY e0 'de_DE'>\n";
    for (std::size_t i = 1; i < length; ++i)
        document += "<!ENTITY e" + std::to_string(i) + " '&e" + std::to_string(i - 1) + ";'>\n";
    const std::string last = "&e" + std::to_string(length - 1) + ";";
    return document + "]>\n" +
           (in_attribute ? in_lcdata("<locale name='" + last + "'><alias name='qx_a'/></locale>") : in_lcdata(last));
}

TEST(parse_xml_file, bounds_entity_expansion_and_nesting)
{
    const load_result honest = load_text(entity_chain(3, true));
    EXPECT_EQ(honest.code, 0) << honest.message;
    EXPECT_EQ(ask(*honest.registry, "alias qx_a"), "de_DE");

    // "Billion laughs": nine levels of ten references each would expand to 3 GB.
    std::string laughs = "<!DOCTYPE lcdata [\n<!ENTITY l0 'lol'>\n";
    for (int level = 1; level <= 9; ++level) {
        laughs += "<!ENTITY l" + std::to_string(level) + " '";
        for (int i = 0; i < 10; ++i)
            laughs += "&l" + std::to_string(level - 1) + ";";
        laughs += "'>\n";
    }
    const load_result bomb = load_text(laughs + "]>\n<lcdata>&l9;</lcdata>");
    EXPECT_EQ(bomb.code, 5);
    EXPECT_NE(bomb.message.find(XML_ErrorString(XML_ERROR_AMPLIFICATION_LIMIT_BREACH)), std::string::npos)
        << bomb.message;

    // The parser keeps open elements on the heap; the validator refuses the first surplus end tag.
    std::string deep = "<lcdata>";
    for (int i = 0; i < 100000; ++i)
        deep += "<locale name='de_DE'>";
    for (int i = 0; i < 100000; ++i)
        deep += "</locale>";
    const load_result nested = load_text(deep + "</lcdata>");
    EXPECT_EQ(nested.code, 5);
    EXPECT_TRUE(is_aborted(nested.message)) << nested.message;
}

// Regression: Expat before 2.5.0-1+deb12u5 ran out of stack on a long chain of entities.
TEST(parse_xml_file, survives_a_chain_of_100000_entities)
{
    for (bool in_attribute : {false, true}) {
        const load_result r = load_text(entity_chain(100000, in_attribute));
        EXPECT_TRUE(r.code == 0 || r.code == 5) << r.code << ": " << r.message;
        if (in_attribute && r.code == 0) {
            EXPECT_EQ(ask(*r.registry, "alias qx_a"), "de_DE");
        }
    }
}

TEST(parse_xml_file, opens_nothing_but_a_regular_file_of_bounded_size)
{
    const scratch_dir dir;
    ASSERT_EQ(mkfifo(dir.file("fifo").c_str(), 0600), 0);
    stdfs::create_symlink(dir.file("fifo"), dir.file("link_to_fifo"));
    stdfs::create_directory(dir.file("directory"));
    dir.write("too_large", "");
    stdfs::resize_file(dir.file("too_large"), lcmgmt::max_database_bytes + 1);
    const std::tuple<const char*, std::string, int, const char*> cases[] = {
        {"missing file", dir.file("missing"), 2, "open"},       {"FIFO", dir.file("fifo"), 2, "open"},
        {"link to a FIFO", dir.file("link_to_fifo"), 2, "open"}, {"endless device", "/dev/zero", 2, "open"},
        {"directory", dir.file("directory"), 2, "open"},        {"empty path", "", 2, "open"},
        {"one byte over the limit", dir.file("too_large"), 3, "read"},
    };
    for (const auto& [what, path, code, verb] : cases) {
        const load_result r = load_file(path);
        EXPECT_EQ(r.code, code) << what;
        EXPECT_EQ(r.message, std::string("Failed to ") + verb + " file " + path + ".") << what;
    }
    const std::size_t padding = lcmgmt::max_database_bytes - in_lcdata(qx_a).size();
    const load_result largest = load_text(in_lcdata(std::string(padding, ' ') + qx_a));
    EXPECT_EQ(largest.code, 0) << largest.message;
    EXPECT_NE(largest.registry->find_locale_alias("qx_a"), nullptr);
    // The one failure no file can provoke.
    const LcRscParserCreationFailure parser;
    EXPECT_EQ(parser.getIdentifier() + " " + std::to_string(parser.getCode()) + " " + parser.what(),
              "fl:i18n:LcRscParserCreationFailure 4 Failed to create XML parser.");
}

// Root reads any file, so the check runs again in a child without root's rights.
TEST(parse_xml_file, refuses_a_file_it_may_not_read)
{
    if (const char* path = std::getenv("QXI18N_UNREADABLE_LCDATA")) {
        EXPECT_EQ(load_file(path).code, 2);
        return;
    }
    const scratch_dir dir;
    stdfs::permissions(dir.path(), stdfs::perms::owner_all | stdfs::perms::group_exec | stdfs::perms::others_exec);
    const std::string path = dir.write("lcdata.xml", in_lcdata(qx_a));
    stdfs::permissions(path, stdfs::perms::none);
    if (geteuid() != 0) {
        EXPECT_EQ(load_file(path).code, 2);
        return;
    }
    if (access("/usr/bin/setpriv", X_OK) != 0)
        GTEST_SKIP() << "running as root without setpriv: no way to drop the rights that read any file";
    const std::string self = stdfs::read_symlink("/proc/self/exe").string();
    const std::string command = "QXI18N_UNREADABLE_LCDATA='" + path +
                                "' setpriv --reuid=65534 --regid=65534 --clear-groups '" + self +
                                "' --gtest_filter=parse_xml_file.refuses_a_file_it_may_not_read 2>&1";
    std::FILE* child = popen(command.c_str(), "r");
    ASSERT_NE(child, nullptr);
    std::string output;
    for (int c; (c = std::fgetc(child)) != EOF;)
        output.push_back(static_cast<char>(c));
    const int status = pclose(child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << output;
    EXPECT_NE(output.find("[  PASSED  ] 1 test."), std::string::npos) << output;
}

}  // namespace
