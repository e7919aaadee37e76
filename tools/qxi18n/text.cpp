// `qxi18n text`: the text engine on the command line: case mapping, normalisation, removal of
// diacritics, classification, comparison, search, pattern matching and trimming.
#include "cli.hpp"
#include "text_command.hpp"

#include <fl/i18n/character_handling.hpp>
#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion.hpp>
#include <fl/i18n/conversion_error.hpp>
#include <fl/i18n/ctype_error.hpp>
#include <fl/i18n/locale.hpp>
#include <fl/i18n/pattern_match.hpp>
#include <fl/i18n/text_compare.hpp>
#include <fl/i18n/transform.hpp>
#include <fl/i18n/trim.hpp>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace qxi18n_tool {

namespace {

using namespace fl::i18n;
using foundation::ustring::detail::do_transform_impl;

void print_help()
{
    std::printf(
        "Usage: qxi18n text OPERATION [OPTIONS] [TEXT...]\n\n"
        "Runs one operation of the library's text engine on each TEXT, or on standard input\n"
        "when no TEXT is given (read as one text; for match, one subject per line).\n\n"
        "Operations:\n"
        "  upper, lower          full case mapping (\"straße\" -> \"STRASSE\"); root rules, or\n"
        "                        those of --locale (\"tr_TR\": i -> İ)\n"
        "  nfc, nfd, nfkc, nfkd  Unicode normal forms\n"
        "  strip-diacritics      decompose, drop non-spacing marks, recompose\n"
        "  classify              one row per code point: U+hhhh, the character, its general\n"
        "                        category and its classes\n"
        "  compare A B           \"less\", \"equal\" or \"greater\" under --tag\n"
        "  find NEEDLE HAYSTACK  the position of NEEDLE in HAYSTACK (in UTF-16 units of the\n"
        "                        transformed haystack) or \"not found\", under --tag\n"
        "  match PATTERN [TEXT...]  \"match\" or \"no match\" and the subject, for an ICU regular\n"
        "                        expression matched against the whole subject under --mode\n"
        "  trim [TEXT...]        removes leading and trailing units of --set\n\n"
        "Options:\n"
        "  --mode MASK           handling mode, 0 to 31 (decimal or 0x hex), a sum of\n"
        "                        1 case insensitive, 2 normalised (NFC), 6 normalised (NFD),\n"
        "                        8 locale dependent, 16 normalisation insensitive; for match,\n"
        "                        and for compare and find when --tag is not given\n"
        "  --tag TAG             compare and find: case-sensitive (default), case-insensitive,\n"
        "                        normalized, normalized-case-insensitive; compare also\n"
        "                        compatibility, compatibility-case-insensitive\n"
        "  --locale NAME         upper, lower: use the case rules of locale NAME\n"
        "  --set SET             trim: the code units to remove (default: blank and tab)\n"
        "  --left, --right       trim: one end only\n"
        "  -e, --encoding ENC    encoding of TEXT, standard input and output (default: the\n"
        "                        encoding of the global locale); bad sequences are errors\n"
        "  -h, --help            show this help\n\n"
        "Exit status: 0 success, 1 text the encoding cannot hold, a pattern ICU refuses,\n"
        "2 bad usage (unknown operation, option or tag, mode above 31, missing operand).\n");
}

// Everything the command line said besides the operation and its operands.
struct settings {
    std::string mode = "0";
    std::string tag, locale, encoding;
    std::string set = " \t";
    bool set_given = false, left = false, right = false, help = false;
};

unsigned int parse_mask(const std::string& text)
{
    errno = 0;
    char* end = nullptr;
    const unsigned long value = std::strtoul(text.c_str(), &end, 0);
    if (text.empty() || *end != '\0' || errno != 0 || text[0] == '-' || value > 0xFFFFFFFFUL)
        throw usage_error("text", "mode '" + text + "' is not a number");
    return static_cast<unsigned int>(value);
}

character_handling_mode_context make_mode(const std::string& text)
{
    const unsigned int mask = parse_mask(text);
    try {
        return character_handling_mode_context(mask);
    } catch (const CtypeInvalidArgument& e) {
        throw usage_error("text", "mode " + std::to_string(mask) + " is above 31 (" + e.what() + ")");
    }
}

// The comparison a --tag names, or the one a --mode implies.
enum class comparison { sensitive, insensitive, normalized, normalized_insensitive, compat, compat_insensitive };

comparison pick_comparison(const settings& s, bool search)
{
    struct named {
        const char* name;
        comparison value;
    };
    static const named tags[] = {
        {"case-sensitive", comparison::sensitive},
        {"case-insensitive", comparison::insensitive},
        {"normalized", comparison::normalized},
        {"normalized-case-insensitive", comparison::normalized_insensitive},
        {"compatibility", comparison::compat},
        {"compatibility-case-insensitive", comparison::compat_insensitive},
    };
    if (s.tag.empty()) {
        const character_handling_mode_context mode = make_mode(s.mode);
        const bool normalized = mode.is_normalized_compose_mode() || mode.is_normalized_decompose_mode()
                                || mode.is_normalization_insensitive_mode();
        const bool insensitive = !mode.is_case_sensitive_mode();
        return normalized ? (insensitive ? comparison::normalized_insensitive : comparison::normalized)
                          : (insensitive ? comparison::insensitive : comparison::sensitive);
    }
    for (const named& t : tags)
        if (s.tag == t.name) {
            if (search && (t.value == comparison::compat || t.value == comparison::compat_insensitive))
                throw usage_error("text", "find has no tag '" + s.tag + "'");
            return t.value;
        }
    throw usage_error("text", "unknown tag '" + s.tag + "'");
}

int sign(int value) { return (value > 0) - (value < 0); }

int compare_texts(const ustring& a, const ustring& b, comparison how)
{
    const auto run = [&](const auto& tag) { return detail::compare(a.data(), a.size(), b.data(), b.size(), tag); };
    switch (how) {
    case comparison::sensitive: return sign(run(case_sensitive()));
    case comparison::insensitive: return sign(run(case_insensitive()));
    case comparison::normalized: return sign(run(normalized_case_sensitive()));
    case comparison::normalized_insensitive: return sign(run(normalized_case_insensitive()));
    case comparison::compat: return sign(run(normalized_compatibility_case_sensitive()));
    case comparison::compat_insensitive: return sign(run(normalized_compatibility_case_insensitive()));
    }
    return 0;
}

unsigned long find_text(const ustring& needle, const ustring& haystack, comparison how)
{
    switch (how) {
    case comparison::insensitive: return detail::find(haystack, needle, case_insensitive());
    case comparison::normalized: return detail::find(haystack, needle, normalized_case_sensitive());
    case comparison::normalized_insensitive: return detail::find(haystack, needle, normalized_case_insensitive());
    default: return detail::find(haystack, needle, case_sensitive());
    }
}

// Text in and out of the command's encoding; a sequence it cannot decode or a character it
// cannot encode is an error, never a silent substitution.
class text_codec {
public:
    explicit text_codec(const std::string& encoding)
        : encoding_(encoding.empty() ? QxLocale::global().getEncoding() : encoding),
          decoder_(make_decoder(encoding_)), encoder_(encoding_, false)
    {
    }
    ustring decode(const std::string& bytes) const
    {
        try {
            return to_ustring(bytes, decoder_);
        } catch (const CvtExceptionBase& e) {
            throw io_error("text: input that is not " + encoding_ + " (" + e.what() + ")");
        }
    }
    std::string encode(const ustring& text) const
    {
        try {
            return to_string(text, encoder_);
        } catch (const CvtExceptionBase& e) {
            throw io_error("text: " + encoding_ + " cannot hold the result (" + e.what() + ")");
        }
    }

private:
    static codecvt_string_to_ustring make_decoder(const std::string& encoding)
    {
        try {
            return codecvt_string_to_ustring(encoding, false);
        } catch (const CvtInvalidEncodingName&) {
            throw usage_error("text", "unknown encoding '" + encoding + "'");
        }
    }
    std::string encoding_;
    codecvt_string_to_ustring decoder_;
    codecvt_ustring_to_string encoder_;
};

std::string read_standard_input()
{
    std::string bytes;
    char buffer[65536];
    std::size_t got;
    while ((got = std::fread(buffer, 1, sizeof buffer, stdin)) > 0)
        bytes.append(buffer, got);
    if (std::ferror(stdin))
        throw read_error("text: cannot read standard input: " + std::string(std::strerror(errno)));
    return bytes;
}

std::vector<std::string> split_lines(const std::string& bytes)
{
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < bytes.size()) {
        std::size_t end = bytes.find('\n', start);
        if (end == std::string::npos)
            end = bytes.size();
        lines.push_back(bytes.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

void print_line(const text_codec& codec, const ustring& text)
{
    const std::string bytes = codec.encode(text);
    std::fwrite(bytes.data(), 1, bytes.size(), stdout);
    std::fputc('\n', stdout);
}

ustring transform_text(const std::string& operation, const settings& s, const ustring& text)
{
    const bool upper = operation == "upper";
    if (!s.locale.empty()) {
        const auto locale = QxLocale::createLocale(s.locale);
        return upper ? do_transform_impl(text.data(), text.size(), to_upper_locale(*locale))
                     : do_transform_impl(text.data(), text.size(), to_lower_locale(*locale));
    }
    if (upper)
        return do_transform_impl(text.data(), text.size(), to_upper());
    if (operation == "lower")
        return do_transform_impl(text.data(), text.size(), to_lower());
    if (operation == "nfc")
        return do_transform_impl(text.data(), text.size(), to_nfc());
    if (operation == "nfd")
        return do_transform_impl(text.data(), text.size(), to_nfd());
    if (operation == "nfkc")
        return do_transform_impl(text.data(), text.size(), to_nfkc());
    if (operation == "nfkd")
        return do_transform_impl(text.data(), text.size(), to_nfkd());
    return detail::do_transform(text.data(), text.size(), to_no_diacritics());
}

bool is_transform(const std::string& operation)
{
    for (const char* name : {"upper", "lower", "nfc", "nfd", "nfkc", "nfkd", "strip-diacritics"})
        if (operation == name)
            return true;
    return false;
}

// Options that only some operations take are refused elsewhere, so that a typo is not ignored.
void check_options(const std::string& operation, const settings& s)
{
    const auto refuse = [&](bool given, const char* option, const char* operations) {
        if (given)
            throw usage_error("text", std::string("option ") + option + " applies to " + operations + " only");
    };
    refuse(!s.locale.empty() && operation != "upper" && operation != "lower", "--locale", "upper and lower");
    refuse(!s.tag.empty() && operation != "compare" && operation != "find", "--tag", "compare and find");
    refuse((s.set_given || s.left || s.right) && operation != "trim", "--set, --left and --right", "trim");
}

std::size_t expect_operands(const std::string& operation, const std::vector<std::string>& operands,
                            std::size_t count, const char* names)
{
    if (operands.size() != count)
        throw usage_error("text", operation + " takes " + names);
    return count;
}

int run_operation(const std::string& operation, const settings& s, const std::vector<std::string>& operands)
{
    check_options(operation, s);
    const text_codec codec(s.encoding);
    std::vector<ustring> texts;
    const auto take_texts = [&](std::size_t first, bool lines) {
        for (std::size_t i = first; i < operands.size(); ++i)
            texts.push_back(codec.decode(operands[i]));
        if (operands.size() == first) {
            const std::string input = read_standard_input();
            for (const std::string& piece : lines ? split_lines(input) : std::vector<std::string>{input})
                texts.push_back(codec.decode(piece));
        }
    };

    if (is_transform(operation)) {
        take_texts(0, false);
        for (const ustring& text : texts)
            print_line(codec, transform_text(operation, s, text));
    } else if (operation == "classify") {
        take_texts(0, false);
        for (const ustring& text : texts)
            print_classification(text, [&](const ustring& glyph) { return codec.encode(glyph); });
    } else if (operation == "compare") {
        expect_operands(operation, operands, 2, "two texts, A and B");
        static const char* const words[] = {"less", "equal", "greater"};
        std::printf("%s\n", words[compare_texts(codec.decode(operands[0]), codec.decode(operands[1]),
                                                pick_comparison(s, false)) + 1]);
    } else if (operation == "find") {
        expect_operands(operation, operands, 2, "two texts, NEEDLE and HAYSTACK");
        const unsigned long at = find_text(codec.decode(operands[0]), codec.decode(operands[1]), pick_comparison(s, true));
        if (at == detail::npos)
            std::printf("not found\n");
        else
            std::printf("%lu\n", at);
    } else if (operation == "match") {
        if (operands.empty())
            throw usage_error("text", "match takes a PATTERN");
        const ustring pattern = codec.decode(operands[0]);
        take_texts(1, true);
        try {
            const pattern_match matcher(pattern, make_mode(s.mode));
            for (const ustring& text : texts) {
                std::fputs(matcher.match(text) ? "match     " : "no match  ", stdout);
                print_line(codec, text);
            }
        } catch (const RegexExceptionBase& e) {
            throw io_error("text: match: pattern '" + operands[0] + "': " + e.what());
        }
    } else if (operation == "trim") {
        const ustring set = codec.decode(s.set);
        take_texts(0, false);
        for (const ustring& text : texts)
            print_line(codec, s.left == s.right ? trim_copy(text, set)
                              : s.left          ? trim_copy_left(text, set)
                                                : trim_copy_right(text, set));
    } else {
        throw usage_error("text", "unknown operation '" + operation + "'");
    }
    return exit_ok;
}

}  // namespace

int run_text(int argc, char** argv)
{
    arguments args(argc, argv, "text");
    settings s;
    std::string operation;
    std::vector<std::string> operands;
    while (args.more()) {
        if (args.help()) {
            print_help();
            return exit_ok;
        }
        if (args.option(nullptr, "--mode", s.mode) || args.option(nullptr, "--tag", s.tag)
            || args.option(nullptr, "--locale", s.locale) || args.option("-e", "--encoding", s.encoding))
            continue;
        if (args.option(nullptr, "--set", s.set)) {
            s.set_given = true;
            continue;
        }
        if (args.flag(nullptr, "--left")) {
            s.left = true;
            continue;
        }
        if (args.flag(nullptr, "--right")) {
            s.right = true;
            continue;
        }
        if (operation.empty())
            operation = args.operand();
        else
            operands.push_back(args.operand());
    }
    if (operation.empty())
        throw usage_error("text", "missing operation");
    return run_operation(operation, s, operands);
}

}  // namespace qxi18n_tool
