// A program outside the project, built against an installed qxi18n: converts text and prints
// the installation root the library finds for itself.
#include <fl/filesystem.hpp>
#include <fl/i18n.hpp>

#include <cstdio>
#include <exception>
#include <string>

namespace {

void print_bytes(const char* label, const std::string& bytes)
{
    std::fprintf(stderr, "%s:", label);
    for (const char b : bytes)
        std::fprintf(stderr, " %02X", static_cast<unsigned>(static_cast<unsigned char>(b)));
    std::fprintf(stderr, "\n");
}

}  // namespace

int main()
{
    try {
        const ustring text = fl::i18n::utf8_to_ustring("Gr\xC3\xBC\xC3\x9F" "e");
        if (text != u"Gr\u00FC\u00DF" "e") {
            std::fprintf(stderr, "consumer: UTF-8 did not decode to the expected UTF-16\n");
            return 1;
        }
        const fl::i18n::codecvt_ustring_to_string to_cp1252("windows-1252", false);
        const std::string bytes = fl::i18n::to_string(text, to_cp1252);
        const std::string expected = "Gr\xFC\xDF" "e";
        if (bytes != expected) {
            print_bytes("consumer: windows-1252 got", bytes);
            print_bytes("consumer: expected", expected);
            return 1;
        }
        const std::string root =
            fl::filesystem::pathname_traits<char16_t>::to_filesystem(fl::filesystem::get_install_path());
        std::printf("install_path=%s\n", root.c_str());
        return root.empty() ? 1 : 0;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "consumer: %s\n", e.what());
        return 1;
    }
}
