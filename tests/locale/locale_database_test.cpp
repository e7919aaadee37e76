// The locale database reader: its grammar, what each element writes into the registry and logs,
// the chunked file loop, hostile files, and the database that ships with the library.
#include "locale/locale_database.hpp"
#include "locale/locale_name.hpp"

#include <fl/i18n/locale_database_error.hpp>

#include <boost/exception_ptr.hpp>
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
#include <vector>

namespace {

using namespace fl::i18n;
using detail::locale_registry;
namespace stdfs = std::filesystem;

// A directory of its own for each test, removed with everything in it.
class scratch_dir {
public:
    scratch_dir()
    {
        // mkdtemp replaces the six trailing X.
        std::string pattern = (stdfs::temp_directory_path() / "qxi18n_lcdata_").string() + std::string(6, 'X');
        if (mkdtemp(pattern.data()) == nullptr)
            throw std::runtime_error("mkdtemp failed for " + pattern);
        path_ = pattern;
    }
    ~scratch_dir()
    {
        std::error_code ignored;
        stdfs::remove_all(path_, ignored);
    }
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
    std::vector<std::string> log;
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
    }
    return result;
}

load_result load_text(const std::string& document)
{
    const scratch_dir dir;
    return load_file(dir.write("lcdata.xml", document));
}

std::string in_lcdata(const std::string& body) { return "<lcdata>" + body + "</lcdata>"; }
std::string german(const std::string& children) { return "<locale name=\"de_DE\">" + children + "</locale>"; }
const std::string qx_a = german("<alias name=\"qx_a\"/>");

// The message the reader gives for what plain Expat, fed the whole text at once, reports.
std::string expat_message(const std::string& document)
{
    const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreate("UTF-8"), XML_ParserFree);
    if (XML_Parse(parser.get(), document.data(), static_cast<int>(document.size()), XML_TRUE) != XML_STATUS_ERROR)
        return "well-formed";
    return LcRscInvalidXmlDoc(XML_ErrorString(XML_GetErrorCode(parser.get())),
                              XML_GetCurrentColumnNumber(parser.get()), XML_GetCurrentLineNumber(parser.get()))
        .getMessage();
}

std::string aborted_prefix()
{
    return std::string("XML Parse error detected with ") + XML_ErrorString(XML_ERROR_ABORTED) + " at column, ";
}

TEST(LcRscExceptionBase, carries_identifier_code_and_text)
{
    const LcRscOpenFileFailure open("/opt/bin/lcdata.xml");
    const LcRscFileReadFailure read("/opt/bin/lcdata.xml");
    const LcRscParserCreationFailure parser;
    const LcRscInvalidXmlDoc invalid("unclosed token", 7, 3);
    const struct {
        const LcRscExceptionBase& failure;
        const char* identifier;
        int code;
        const char* text;
    } cases[] = {
        {open, "fl:i18n:LcRscOpenFileFailure", 2, "Failed to open file /opt/bin/lcdata.xml."},
        {read, "fl:i18n:LcRscFileReadFailure", 3, "Failed to read file /opt/bin/lcdata.xml."},
        {parser, "fl:i18n:LcRscParserCreationFailure", 4, "Failed to create XML parser."},
        {invalid, "fl:i18n:LcRscInvalidXmlDoc", 5,
         "XML Parse error detected with unclosed token at column, 7, on line, 3 in resource file."},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.failure.getIdentifier(), c.identifier);
        EXPECT_EQ(c.failure.getCode(), c.code) << c.identifier;
        EXPECT_EQ(c.failure.getMessage(), c.text) << c.identifier;
        EXPECT_STREQ(c.failure.what(), c.text) << c.identifier;
    }
}

TEST(LcRscExceptionBase, is_thrown_so_that_an_exception_ptr_keeps_its_type)
{
    boost::exception_ptr caught;
    try {
        detail::load_locale_database(*std::make_unique<locale_registry>(), *std::make_unique<std::vector<std::string>>(),
                                     "/nonexistent/lcdata.xml");
    } catch (...) {
        caught = boost::current_exception();
    }
    ASSERT_TRUE(caught);
    EXPECT_THROW(boost::rethrow_exception(caught), LcRscOpenFileFailure);
}

TEST(EventValidator, accepts_the_grammar_and_any_element_as_root)
{
    struct step {
        bool start;
        const char* name;
        int result;
    };
    const std::vector<std::vector<step>> cases = {
        {{true, "lcdata", 1}, {true, "locale", 2}, {true, "alias", 3}, {false, "alias", 0},
         {true, "region_alias", 4}, {false, "region_alias", 0}, {true, "l10n", 5}, {false, "l10n", 0},
         {false, "locale", 0}, {true, "codeset", 6}, {true, "encoding", 7}, {true, "encoding_alias", 8},
         {false, "encoding_alias", 0}, {false, "encoding", 0}, {false, "codeset", 0}, {false, "lcdata", 0}},
        {{true, "encoding_alias", 8}, {false, "encoding_alias", 0}},
        {{true, "alias", 3}, {true, "alias", 3}, {false, "alias", 0}, {false, "alias", -2}},
        // The inner element's end closes the outer one, so the outer end is refused.
        {{true, "lcdata", 1}, {true, "locale", 2}, {true, "locale", 2}, {false, "locale", 0}, {false, "locale", -2}},
        {{true, "lcdata", 1}, {true, "alias", -2}},
        {{true, "lcdata", 1}, {true, "encoding", -2}},
        {{true, "lcdata", 1}, {true, "locale", 2}, {true, "codeset", -2}},
        {{true, "LCDATA", -2}},
        {{true, "lcdata", 1}, {false, "locale", -2}},
        {{false, "lcdata", -2}},
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        lcmgmt::EventValidator validator;
        for (const step& s : cases[i])
            EXPECT_EQ(s.start ? validator.on_start(s.name) : validator.on_end(s.name), s.result)
                << "case " << i << (s.start ? " <" : " </") << s.name << ">";
    }
}

TEST(LcdbEventHandler, stops_on_documents_outside_the_grammar)
{
    const struct {
        const char* what;
        std::string document;
        bool stops;
        bool keeps_qx_a;  // the alias read before the stop stays
    } cases[] = {
        {"locale without codes", in_lcdata("<locale name=\"xx_YY\"/>"), false, false},
        {"locale without a name", in_lcdata(qx_a + "<locale encoding=\"UTF-8\"/>" + german("<alias name=\"qx_b\"/>")),
         true, true},
        {"alias under lcdata", in_lcdata("<alias name=\"qx_a\"/>"), true, false},
        {"locale as root", qx_a, false, true},
        {"declared utf-8", "<?xml version=\"1.0\" encoding=\"utf-8\"?>" + in_lcdata(qx_a), false, true},
        {"declared ISO-8859-1", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + in_lcdata(qx_a), true, false},
        {"declaration without encoding", "<?xml version=\"1.0\"?>" + in_lcdata(qx_a), false, true},
        {"unknown element", in_lcdata(qx_a + "<locales/>"), true, true},
        {"unknown attributes, root attributes and text",
         "<lcdata version=\"9\">text<locale name=\"de_DE\" colour=\"red\">more<alias name=\"qx_a\" extra=\"\"/>"
         "</locale>tail</lcdata>",
         false, true},
        {"empty optional attributes", in_lcdata("<locale name=\"de_DE\" encoding=\"\" xpg_name=\"\"/>" + qx_a), false,
         true},
        {"empty locale name", in_lcdata(qx_a + "<locale name=\"\"/>"), true, true},
        {"empty alias name", in_lcdata(qx_a + german("<alias name=\"\"/>")), true, true},
        {"empty region alias name", in_lcdata(qx_a + german("<region_alias name=\"\"/>")), true, true},
        {"empty l10n value", in_lcdata(qx_a + german("<l10n disable=\"\"/>")), true, true},
        {"empty encoding name", in_lcdata(qx_a + "<codeset><encoding name=\"\"/></codeset>"), true, true},
        {"empty encoding alias", in_lcdata(qx_a + "<codeset><encoding name=\"UTF-8\"><encoding_alias name=\"\"/>"
                                                  "</encoding></codeset>"),
         true, true},
        {"encoding alias without an encoding", "<encoding_alias name=\"qx_enc\"/>", true, false},
        {"locale in locale", in_lcdata("<locale name=\"fr_FR\">" + qx_a + "</locale>"), true, true},
        {"codeset in locale", in_lcdata(german("<codeset/>")), true, false},
        {"encoding under lcdata", in_lcdata("<encoding name=\"UTF-8\"/>"), true, false},
    };
    for (const auto& c : cases) {
        const load_result r = load_text(c.document);
        EXPECT_EQ(r.code, c.stops ? 5 : 0) << c.what << ": " << r.message;
        if (c.stops) {
            EXPECT_EQ(r.message.rfind(aborted_prefix(), 0), 0U) << c.what << ": " << r.message;
        }
        EXPECT_EQ(r.registry->find_locale_alias("qx_a") != nullptr, c.keeps_qx_a) << c.what;
        EXPECT_EQ(r.log, std::vector<std::string>{}) << c.what;
    }
}

TEST(parse_xml_file, reports_malformed_documents_in_expat_words)
{
    const std::string cases[] = {
        in_lcdata(qx_a + "<locale name=\"fr"),  // truncated inside a tag
        "<lcdata>\n  " + qx_a + "\n",           // truncated after a tag
        "",
        "<lcdata></locale>",
        in_lcdata(qx_a) + "<lcdata/>",
        "<lcdata>\n<locale name=\"de_DE\" name=\"fr_FR\"/>\n</lcdata>",
        "<lcdata>&undefined;</lcdata>",
        "\xEF\xBB\xBF<lcdata><locale name=\"\xC3\x28\"/></lcdata>",
    };
    for (const std::string& document : cases) {
        const load_result r = load_text(document);
        EXPECT_EQ(r.code, 5) << document;
        EXPECT_EQ(r.message, expat_message(document)) << document;
    }
    // What came before the point where the text broke off stays loaded.
    EXPECT_NE(load_text(cases[0]).registry->find_locale_alias("qx_a"), nullptr);
}

// One element's writes: the log it leaves and what the registry then answers.
struct write_case {
    const char* what;
    std::string document;
    std::vector<std::string> log;
    std::function<void(const locale_registry&)> check;
};

std::string str(const char* text) { return text ? text : "(null)"; }

void run_write_cases(const std::vector<write_case>& cases)
{
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const load_result r = load_text(c.document);
        EXPECT_EQ(r.code, 0) << r.message;
        EXPECT_EQ(r.log, c.log);
        if (c.check)
            c.check(*r.registry);
    }
}

TEST(LcData, locale_elements_write_their_maps)
{
    const auto canonical = [](const locale_registry& r, const char* name) {
        return detail::canonical_locale_name(r, name);
    };
    run_write_cases({
        {"a new locale needs both codes", in_lcdata("<locale name=\"qx-qq\" encoding=\"latin9\" xpg_name=\"qx_QQ.ISO8859-15\"/>"),
         {},
         [&](const locale_registry& r) {
             EXPECT_EQ(canonical(r, "QX_qq"), "qx_QQ");
             EXPECT_EQ(str(r.default_encoding_of("qx_QQ")), "ISO-8859-15");
             EXPECT_EQ(str(r.find_xpg_name("qx_QQ")), "qx_QQ.ISO8859-15");
             EXPECT_EQ(str(r.find_locale_alias("qx_qq.iso8859-15")), "qx_QQ");
         }},
        {"a new script locale", in_lcdata("<locale name=\"qx_latn_qq\" encoding=\"UTF-8\" xpg_name=\"qx_QQ@latin\"/>"),
         {},
         [&](const locale_registry& r) { EXPECT_EQ(canonical(r, "qx-Latn-QQ"), "qx-Latn_QQ"); }},
        {"only an encoding", in_lcdata("<locale name=\"cz\" encoding=\"windows-1250\"/>"), {},
         [](const locale_registry& r) {
             EXPECT_EQ(str(r.default_encoding_of("cs_CZ")), "windows-1250");
             EXPECT_EQ(r.find_xpg_name("cs_CZ"), nullptr);
         }},
        {"only an XPG name", in_lcdata("<locale name=\"de_DE\" xpg_name=\"de_DE.ISO8859-1\"/>"), {},
         [&](const locale_registry& r) {
             EXPECT_EQ(str(r.find_xpg_name("de-de")), "de_DE.ISO8859-1");
             EXPECT_EQ(str(r.find_locale_alias("DE_de.iso8859-1")), "de_DE");
             EXPECT_EQ(str(r.default_encoding_of("de_DE")), "ISO-8859-1");
         }},
        {"both codes on a known locale", in_lcdata("<locale name=\"fr_FR\" encoding=\"ISO-8859-15\" xpg_name=\"fr_FR@euro\"/>"),
         {},
         [&](const locale_registry& r) {
             EXPECT_EQ(str(r.default_encoding_of("fr_FR")), "ISO-8859-15");
             EXPECT_EQ(str(r.find_locale_alias("fr_FR@euro")), "fr_FR");
         }},
        // The encoding equals the one held, so only the XPG name is asked for, and refused.
        {"a held value counts as not given", in_lcdata("<locale name=\"de_DE\" encoding=\"iso88591\" xpg_name=\"fr_FR\"/>"),
         {"LcData::addLcName::modifyXpgName - de_DE:fr_FR3"}, nullptr},
        {"a conflict stores nothing", in_lcdata("<locale name=\"qx_QQ\" encoding=\"UTF-8\" xpg_name=\"it_IT\"/>"),
         {"LcData::addLcName::modifyLcEntry - qx_QQ:UTF-8:it_IT3"},
         [&](const locale_registry& r) { EXPECT_EQ(canonical(r, "qx_QQ"), ""); }},
        {"an unknown locale with one code",
         in_lcdata("<locale name=\"xx_YY\" encoding=\"UTF-8\"/><locale name=\"xx_YY\" xpg_name=\"xx\"/>"),
         {"LcData::addLcName::modifyDefEncoding - xx_YY:UTF-84", "LcData::addLcName::modifyXpgName - xx_YY:xx4"},
         nullptr},
        {"names the registry cannot place",
         in_lcdata("<locale name=\"xx_YY\" encoding=\"no-such-encoding\" xpg_name=\"xx\"/>"
                   "<locale name=\"xx_YY_VARIANT1\" encoding=\"UTF-8\" xpg_name=\"xx\"/>"),
         {"LcData::addLcName::modifyLcEntry - xx_YY:no-such-encoding:xx4",
          "LcData::addLcName::modifyLcEntry - xx_YY_VARIANT1:UTF-8:xx4"},
         nullptr},
        {"aliases", in_lcdata("<locale name=\"EN_gb\"><alias name=\"qx_english\"/><alias name=\"en\"/></locale>"), {},
         [&](const locale_registry& r) {
             EXPECT_EQ(canonical(r, "QX_English"), "en_GB");
             EXPECT_EQ(canonical(r, "en"), "en_GB");
         }},
        {"alias codes",
         in_lcdata(german("<alias name=\"fr_FR\"/>") + "<locale name=\"xx_YY\"><alias name=\"qx\"/></locale>"),
         {"LcData::addAliasLcName::modifyLcAliasName - de_DE:fr_FR3",
          "LcData::addAliasLcName::modifyLcAliasName - xx_YY:qx4"},
         [&](const locale_registry& r) { EXPECT_EQ(canonical(r, "fr_FR"), "fr_FR"); }},
        {"region aliases",
         in_lcdata("<locale name=\"de_CH\"><region_alias name=\"de_LI\"/><region_alias name=\"de_ch\"/></locale>"),
         {"LcData::addRegionAliasLcName::modifyLcAliasName - de_CH:de_ch3"},
         [&](const locale_registry& r) {
             EXPECT_EQ(str(r.find_region_alias("DE-li")), "de_CH");
             EXPECT_EQ(r.find_locale_alias("de_LI"), nullptr);
         }},
        {"l10n flags",
         in_lcdata("<locale name=\"cz\"><l10n disable=\"L\"/></locale>"
                   "<locale name=\"xx_YY\"><l10n disable=\"L\"/></locale>"),
         {"LcData::addL10nFlag::modifyLcOptData - xx_YY:L4"},
         [](const locale_registry& r) {
             EXPECT_EQ(r.get_option("cs_CZ", "disable_l10n"), "L");
             EXPECT_EQ(r.get_option("cz", "disable_l10n"), "");
         }},
        {"children of a root without a locale",
         "<alias name=\"qx\"/>",
         {"LcData::addAliasLcName::modifyLcAliasName - :qx2"}, nullptr},
        {"an l10n root", "<l10n disable=\"L\"/>", {"LcData::addL10nFlag::modifyLcOptData - :L2"}, nullptr},
    });
}

std::string in_codeset(const std::string& body) { return in_lcdata("<codeset>" + body + "</codeset>"); }

TEST(LcData, encoding_elements_write_their_maps)
{
    run_write_cases({
        {"a JVM name reaches every spelling", in_codeset("<encoding name=\"eucjp\" jvm_encoding=\"EUC_JP\"/>"), {},
         [](const locale_registry& r) {
             EXPECT_EQ(str(r.find_jvm_encoding("EUC-JP")), "EUC_JP");
             EXPECT_EQ(str(r.find_jvm_encoding("eucJP")), "EUC_JP");
             EXPECT_EQ(str(r.find_standard_encoding("eucjp")), "EUC-JP");
             EXPECT_EQ(r.find_encoding_entry("eucjp"), r.find_encoding_entry("EUC-JP"));
         }},
        {"a compatible encoding", in_codeset("<encoding name=\"GB18030\" compat=\"936\"/>"), {},
         [](const locale_registry& r) { EXPECT_EQ(str(r.find_compat_encoding("gb18030")), "GBK"); }},
        {"both", in_codeset("<encoding name=\"Big5HKSCS\" jvm_encoding=\"MS950_HKSCS\" compat=\"Big5\"/>"), {},
         [](const locale_registry& r) {
             EXPECT_EQ(str(r.find_jvm_encoding("Big5-HKSCS")), "MS950_HKSCS");
             EXPECT_EQ(str(r.find_compat_encoding("Big5HKSCS")), "Big5");
         }},
        {"an encoding only ICU knew", in_codeset("<encoding name=\"cp437\" jvm_encoding=\"Cp437\" compat=\"ascii\"/>"), {},
         [](const locale_registry& r) {
             EXPECT_EQ(str(r.find_standard_encoding("ibm437")), "IBM437");
             EXPECT_EQ(str(r.find_standard_encoding("CP437")), "IBM437");
             EXPECT_EQ(str(r.find_jvm_encoding("IBM437")), "Cp437");
             EXPECT_EQ(str(r.find_compat_encoding("cp437")), "US-ASCII");
         }},
        {"held values are no change",
         in_codeset("<encoding name=\"Big5\" jvm_encoding=\"MS950\"><encoding_alias name=\"950\"/></encoding>"),
         {}, nullptr},
        {"aliases", in_codeset("<encoding name=\"windows-874\"><encoding_alias name=\"TIS-620\"/></encoding>"
                               "<encoding name=\"cp437\"><encoding_alias name=\"qx-dos-us\"/></encoding>"),
         {},
         [](const locale_registry& r) {
             EXPECT_EQ(str(r.find_standard_encoding("tis-620")), "windows-874");
             EXPECT_EQ(str(r.find_jvm_encoding("TIS-620")), "MS874");
             EXPECT_EQ(str(r.find_standard_encoding("QX-DOS-US")), "IBM437");
             EXPECT_EQ(str(r.find_standard_encoding("ibm437")), "IBM437");
         }},
        {"codes",
         in_codeset("<encoding name=\"no-such-encoding\" jvm_encoding=\"X\"/>"
                    "<encoding name=\"UTF-8\" compat=\"utf8\"/>"
                    "<encoding name=\"UTF-8\" jvm_encoding=\"UTF8\" compat=\"no-such-encoding\"/>"
                    "<encoding name=\"UTF-8\"><encoding_alias name=\"koi8r\"/></encoding>"
                    "<encoding name=\"no-such-encoding\"><encoding_alias name=\"qx\"/></encoding>"),
         {"LcData::addEncodingName::modifyJvmName - no-such-encoding:X4",
          "LcData::addEncodingName::modifyCompatEncoding - UTF-8:utf83",
          "LcData::addEncodingName::modifyEncodingDataEntry - UTF-8:UTF8:no-such-encoding4",
          "LcData::addEncodingAlias::modifyEncodingAlias - UTF-8:koi8r3",
          "LcData::addEncodingAlias::modifyEncodingAlias - no-such-encoding:qx4"},
         [](const locale_registry& r) {
             EXPECT_EQ(str(r.find_standard_encoding("koi8r")), "KOI8-R");
             EXPECT_EQ(str(r.find_jvm_encoding("UTF-8")), "UTF-8");
             EXPECT_EQ(r.find_standard_encoding("qx"), nullptr);
         }},
    });
}

TEST(locale_registry, database_writes_refuse_empty_inputs)
{
    using detail::alias_kind;
    const std::vector<std::function<int(locale_registry&)>> writes = {
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
    for (std::size_t i = 0; i < writes.size(); ++i) {
        locale_registry registry;
        EXPECT_EQ(writes[i](registry), detail::write_empty_input) << "write " << i;
        EXPECT_EQ(str(registry.default_encoding_of("de_DE")), "ISO-8859-1");
        EXPECT_EQ(registry.find_locale_alias("x"), nullptr);
        EXPECT_EQ(registry.find_region_alias("x"), nullptr);
        EXPECT_EQ(registry.get_option("de_DE", "disable_l10n"), "");
        EXPECT_EQ(str(registry.find_jvm_encoding("UTF-8")), "UTF-8");
        EXPECT_EQ(registry.find_compat_encoding("UTF-8"), nullptr);
    }
}

TEST(LcdbEventHandler, keeps_disable_user_locale)
{
    locale_registry registry;
    std::vector<std::string> log;
    lcmgmt::LcdbEventHandler handler(registry, log);
    const char* attributes[] = {"name", "de_DE", "disable_user_locale", "yes", nullptr};
    EXPECT_EQ(handler.on_start_element("locale", attributes), 0);
    EXPECT_EQ(handler.disable_user_locale(), "yes");
    EXPECT_EQ(handler.get_encoding(), "UTF-8");
}

// The database the library ships: every entry applies without a code.
TEST(shipped_database, loads_without_a_single_refusal)
{
    const std::string source = std::string(QXI18N_TEST_DATA_DIR) + "/bin/lcdata.xml";
    const load_result r = load_file(source);
    ASSERT_EQ(r.code, 0) << r.message;
    EXPECT_EQ(r.log, std::vector<std::string>{});
    EXPECT_EQ(detail::canonical_locale_name(*r.registry, "german"), "de_DE");
    EXPECT_EQ(detail::canonical_locale_name(*r.registry, "szl_PL"), "szl_PL");
    EXPECT_EQ(str(r.registry->find_standard_encoding("TIS-620")), "windows-874");

    // The build tree holds a copy where the library looks: bin/ beside lib/.
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
    for (std::size_t size : {std::size_t{17}, std::size_t{1023}, std::size_t{1024}, std::size_t{1025},
                             std::size_t{2048}, std::size_t{2049}, std::size_t{5000}}) {
        const std::size_t text = size - std::string("<lcdata></lcdata>").size();
        const std::string document = "<lcdata>" + std::string(text, 'a') + "</lcdata>";
        ASSERT_EQ(document.size(), size);
        text_counter counter;
        lcmgmt::parse_xml_file(counter, dir.write("doc.xml", document));
        EXPECT_EQ(counter.characters, text) << size << " bytes";
        // The same length with the last byte cut off: the end is still found to be missing.
        EXPECT_EQ(load_text(document.substr(0, size - 1)).code, 5) << size - 1 << " bytes";
    }
    // Exactly one chunk, read to its end by a second read of nothing, and one byte more.
    for (std::size_t size : {std::size_t{1024}, std::size_t{1025}}) {
        const std::size_t padding = size - in_lcdata(qx_a).size();
        const std::string document = in_lcdata(std::string(padding, '\n') + qx_a);
        ASSERT_EQ(document.size(), size);
        const load_result r = load_text(document);
        EXPECT_EQ(r.code, 0) << r.message;
        EXPECT_NE(r.registry->find_locale_alias("qx_a"), nullptr) << size;
    }
}

// A DOCTYPE with a chain of `length` entities, each the previous one, ending in "de_DE".
std::string entity_chain(std::size_t length, bool in_attribute)
{
    std::string document = "<!DOCTYPE lcdata [\n<!ENTITY e0 \"de_DE\">\n";
    for (std::size_t i = 1; i < length; ++i)
        document += "<!ENTITY e" + std::to_string(i) + " \"&e" + std::to_string(i - 1) + ";\">\n";
    const std::string last = "&e" + std::to_string(length - 1) + ";";
    return document + "]>\n" +
           (in_attribute ? in_lcdata("<locale name=\"" + last + "\"><alias name=\"qx_a\"/></locale>") : in_lcdata(last));
}

TEST(parse_xml_file, bounds_entity_expansion_and_nesting)
{
    const load_result honest = load_text(entity_chain(3, true));
    EXPECT_EQ(honest.code, 0) << honest.message;
    EXPECT_EQ(str(honest.registry->find_locale_alias("qx_a")), "de_DE");

    // "Billion laughs": nine levels of ten references each would expand to 3 GB.
    std::string laughs = "<!DOCTYPE lcdata [\n<!ENTITY l0 \"lol\">\n";
    for (int level = 1; level <= 9; ++level) {
        laughs += "<!ENTITY l" + std::to_string(level) + " \"";
        for (int i = 0; i < 10; ++i)
            laughs += "&l" + std::to_string(level - 1) + ";";
        laughs += "\">\n";
    }
    const load_result bomb = load_text(laughs + "]>\n<lcdata>&l9;</lcdata>");
    EXPECT_EQ(bomb.code, 5);
    EXPECT_NE(bomb.message.find(XML_ErrorString(XML_ERROR_AMPLIFICATION_LIMIT_BREACH)), std::string::npos)
        << bomb.message;

    // The parser keeps open elements on the heap; the validator refuses the first surplus end tag.
    constexpr int depth = 100000;
    std::string deep = "<lcdata>";
    for (int i = 0; i < depth; ++i)
        deep += "<locale name=\"de_DE\">";
    for (int i = 0; i < depth; ++i)
        deep += "</locale>";
    const load_result nested = load_text(deep + "</lcdata>");
    EXPECT_EQ(nested.code, 5);
    EXPECT_EQ(nested.message.rfind(aborted_prefix(), 0), 0U) << nested.message;
}

// Regression: Expat before 2.5.0-1+deb12u5 ran out of stack on a long chain of entities.
TEST(parse_xml_file, survives_a_chain_of_100000_entities)
{
    for (bool in_attribute : {false, true}) {
        const load_result r = load_text(entity_chain(100000, in_attribute));
        EXPECT_TRUE(r.code == 0 || r.code == 5) << r.code << ": " << r.message;
        if (in_attribute && r.code == 0) {
            EXPECT_EQ(str(r.registry->find_locale_alias("qx_a")), "de_DE");
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
    const struct {
        const char* what;
        std::string path;
        int code;
        const char* verb;
    } cases[] = {
        {"missing file", dir.file("missing"), 2, "open"},
        {"FIFO", dir.file("fifo"), 2, "open"},
        {"link to a FIFO", dir.file("link_to_fifo"), 2, "open"},
        {"endless device", "/dev/zero", 2, "open"},
        {"directory", dir.file("directory"), 2, "open"},
        {"empty path", "", 2, "open"},
        {"one byte over the limit", dir.file("too_large"), 3, "read"},
    };
    for (const auto& c : cases) {
        const load_result r = load_file(c.path);
        EXPECT_EQ(r.code, c.code) << c.what;
        EXPECT_EQ(r.message, std::string("Failed to ") + c.verb + " file " + c.path + ".") << c.what;
    }

    const std::size_t padding = lcmgmt::max_database_bytes - in_lcdata(qx_a).size();
    const load_result largest = load_text(in_lcdata(std::string(padding, ' ') + qx_a));
    EXPECT_EQ(largest.code, 0) << largest.message;
    EXPECT_NE(largest.registry->find_locale_alias("qx_a"), nullptr);
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
