// The demo's tour of charset detection: each bundled sample, and a few of our own texts encoded
// into legacy encodings, as detect_charset sees them.
#include "demo.hpp"

#include <fl/i18n/charset_detection.hpp>
#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion.hpp>
#include <fl/i18n/encoding_names.hpp>
#include <fl/i18n/locale.hpp>

#include <cstdio>
#include <sstream>
#include <string>

namespace qxi18n_tool::demo {

namespace {

using namespace fl::i18n;

struct labelled {
    const char* file;
    const char* encoding;  // what the file really is
};

const labelled samples[] = {
    {"beyond-latin1.utf-8.txt", "UTF-8"},      {"french.windows-1252.txt", "windows-1252"},
    {"russian.koi8-r.txt", "KOI8-R"},          {"greek.iso-8859-7.txt", "ISO-8859-7"},
    {"japanese.shift_jis.txt", "Shift_JIS"},   {"japanese.euc-jp.txt", "EUC-JP"},
    {"chinese.gb18030.txt", "GB18030"},        {"mixed.utf-16le-bom.txt", "UTF-16LE"},
    {"malformed.utf-8.txt", "(broken UTF-8)"},
};

const labelled own_texts[] = {
    {"corpus/korean.txt", "EUC-KR"},
    {"corpus/chinese-traditional.txt", "Big5"},
    {"corpus/german.txt", "ISO-8859-1"},
};

void show_row(const std::string& label, const std::string& bytes, const char* truth)
{
    std::ostringstream unused;
    const std::string detected = detect_charset(bytes.data(), bytes.size(), unused, to_ustring(label));
    const std::string standard = get_standard_encoding_name(detected);
    const bool right = !standard.empty() && standard == get_standard_encoding_name(truth);
    std::printf("  %-40s %-13s %-13s %s\n", label.c_str(), truth, detected.c_str(), right ? "right" : "");
}

}  // namespace

void show_detection(const context& ctx)
{
    std::printf("detect_charset settles ASCII and valid UTF-8 by rule, then asks ICU's detector and\n"
                "takes its best match only when it is certain or leads by a wide margin; otherwise\n"
                "the answer is the system locale's encoding, here %s.\n\n",
                QxLocale::system().getDefaultEncoding().c_str());
    std::printf("  %-40s %-13s %-13s\n", "sample", "encoding", "detected");
    for (const labelled& s : samples)
        show_row(s.file, read_sample(ctx, s.file), s.encoding);
    // These are UTF-8 on disk; the demo encodes them first.
    for (const labelled& s : own_texts) {
        const std::string text = read_sample(ctx, s.file);
        show_row(std::string(s.file) + " as " + s.encoding,
                 to_string(to_ustring(text, codecvt_string_to_ustring("UTF-8", false)),
                           codecvt_ustring_to_string(s.encoding, false)),
                 s.encoding);
    }
    std::printf("\nMulti-byte East Asian encodings and byte order marks make ICU certain; short\n"
                "texts in single-byte encodings rarely do, and fall back to the system's encoding.\n");
}

}  // namespace qxi18n_tool::demo
