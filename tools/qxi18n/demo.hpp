// The demo's sections and the small helpers they share.
#pragma once

#include <fl/i18n/ustring.hpp>

#include <string>

namespace qxi18n_tool::demo {

/// Where the sample texts are.
struct context {
    std::string samples;
};

/// One section of the tour: a title and the code that shows it.
struct section {
    const char* title;
    void (*show)(const context& ctx);
};

/// The sections in the order they are shown; `section_count` of them.
extern const section sections[];
extern const std::size_t section_count;

/// The text engine's section, in a file of its own.
void show_text_engine(const context& ctx);
/// Directory listing, path comparison and name validation, in a file of its own.
void show_files(const context& ctx);
/// Date-time text and time zones, in a file of its own.
void show_time(const context& ctx);
/// Charset detection on the samples, in a file of its own.
void show_detection(const context& ctx);

/// The bytes of `file` in the sample directory; throws read_error.
std::string read_sample(const context& ctx, const std::string& file);
/// `text` as UTF-8 for the terminal, first line only.
std::string first_line(const ustring& text);
/// Bytes of ISO-8859-1 as UTF-8 for the terminal, control bytes shown as \xNN.
std::string show_latin1(const std::string& bytes);

}  // namespace qxi18n_tool::demo
