// The demo's tour of files and directories: a filtered listing of the sample directory, path
// comparison under two modes and the validation of names.
#include "demo.hpp"

#include <fl/filesystem/directory_iterator.hpp>
#include <fl/filesystem/path_rules.hpp>
#include <fl/i18n/character_handling.hpp>
#include <fl/i18n/conversion.hpp>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace qxi18n_tool::demo {

namespace fs = fl::filesystem;
using fl::i18n::character_handling_mode_context;
using fl::i18n::ustring_to_utf8;

void show_files(const context& ctx)
{
    // The directory gives its entries in no particular order; sorted here to read well.
    std::vector<std::string> names;
    const fs::upath_directory_iterator end;
    for (fs::upath_directory_iterator it(fs::upath(fl::i18n::to_ustring(ctx.samples)),
                                         fs::wildcard_pattern_string_context(u"*.txt"));
         it != end; ++it)
        names.push_back(ustring_to_utf8(it->filename()));
    std::sort(names.begin(), names.end());
    std::printf("upath_directory_iterator with the wildcard \"*.txt\" finds %zu samples:\n", names.size());
    for (const std::string& name : names)
        std::printf("  %s\n", name.c_str());

    const std::u16string a = u"/data/Reports/R\u00E9sum\u00E9.txt", b = u"/data/reports/r\u00E9sum\u00E9.txt";
    const auto order = [](int result) { return result < 0 ? "less" : result > 0 ? "greater" : "equal"; };
    std::printf("\ncompare(\"%s\", \"%s\"):\n", ustring_to_utf8(a).c_str(), ustring_to_utf8(b).c_str());
    std::printf("  %-24s %s\n", "default_mode", order(fs::compare(a, b, character_handling_mode_context(0))));
    std::printf("  %-24s %s\n", "case_insensitive_mode", order(fs::compare(a, b, character_handling_mode_context(1))));

    std::printf("\nvalidate_pathname with every check (0 passes, else the failed check):\n");
    const std::u16string long_component(200, u'\u00E9');
    const fs::validation_id all = fs::validate_no_null | fs::validate_path_length | fs::validate_component_length;
    const character_handling_mode_context mode(0);
    std::printf("  %2u  \"/data/r\u00E9sum\u00E9.txt\"\n", fs::validate_pathname(u"/data/r\u00E9sum\u00E9.txt", all, mode));
    std::printf("  %2u  \"/data/\" and 200 x \"\u00E9\" (400 bytes)\n",
                fs::validate_pathname(u"/data/" + long_component, all, mode));
    std::printf("\nLengths count bytes of the file-system encoding: 200 characters can break the\n"
                "255-byte limit of one component.\n");
}

}  // namespace qxi18n_tool::demo
