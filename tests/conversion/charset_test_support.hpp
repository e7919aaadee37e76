// Helpers of the charset-detection tests: the labelled corpus, files, and raw ICU's detector as
// the reference the library's answers are compared with.
#pragma once

#include <gtest/gtest.h>
#include <unicode/ucnv.h>
#include <unicode/ucsdet.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace qx_charset_test {

/// Every variable detect_charset reads.
inline const char* const detection_variables[] = {"QX_NO_CHARSET_DETECTION", "QX_CHARSET_DETECT_DIAG",
                                                  "QX_USE_DEFAULT_CHARSET_FOR_ASCII", "QX_CHARSET_DETECT_THRESHOLD",
                                                  "QX_CHARSET_DETECT_UTF8_THRESHOLD"};

/// A file below the data folder (or anywhere, given an absolute path).
inline std::string read_data(const std::filesystem::path& path)
{
    std::ifstream in(std::filesystem::path(QXI18N_TEST_DATA_DIR) / path, std::ios::binary);
    EXPECT_TRUE(in) << path;
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

/// One text of the corpus: "<language>/<encoding>.txt".
struct labelled_file {
    std::string name;      ///< "ja/shift_jis"
    std::string encoding;  ///< "shift_jis"
    std::string bytes;
};

/// Every labelled text of data/corpora/charset, in name order.
inline std::vector<labelled_file> corpus()
{
    namespace fs = std::filesystem;
    std::vector<labelled_file> files;
    for (const auto& entry : fs::recursive_directory_iterator(fs::path(QXI18N_TEST_DATA_DIR) / "corpora/charset")) {
        const fs::path& path = entry.path();
        const std::string language = path.parent_path().filename().string();
        if (entry.is_regular_file() && path.extension() == ".txt" && language != "charset")
            files.push_back({language + "/" + path.stem().string(), path.stem().string(),
                             read_data(path)});
    }
    std::sort(files.begin(), files.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
    return files;
}

/// The bytes the detector is given: from the first byte with the high bit set, or all of them
/// when a zero byte stands before the last position; empty for ASCII.
inline std::string_view detector_input(std::string_view bytes)
{
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if (byte == 0 && i + 1 < bytes.size()) return bytes;
        if (byte >= 0x80) return bytes.substr(i);
    }
    return {};
}

struct icu_match {
    std::string name;
    int confidence;
};

struct ucsdet_closer {
    void operator()(UCharsetDetector* d) const noexcept { ucsdet_close(d); }
};

/// Raw ICU's matches for the detector's share of `bytes`, best first.
inline std::vector<icu_match> icu_matches(std::string_view bytes)
{
    const std::string_view input = detector_input(bytes);
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UCharsetDetector, ucsdet_closer> detector(ucsdet_open(&status));
    ucsdet_setText(detector.get(), input.data(), static_cast<int32_t>(input.size()), &status);
    int32_t count = 0;
    const UCharsetMatch** matches = ucsdet_detectAll(detector.get(), &count, &status);
    std::vector<icu_match> result;
    for (int32_t i = 0; i < count && U_SUCCESS(status); ++i)
        result.push_back({ucsdet_getName(matches[i], &status), ucsdet_getConfidence(matches[i], &status)});
    return result;
}

/// ICU's internal name of an encoding, which all its aliases share; empty when ICU lacks it.
inline std::string icu_canonical_name(const std::string& encoding)
{
    UErrorCode status = U_ZERO_ERROR;
    UConverter* converter = ucnv_open(encoding.c_str(), &status);
    std::string name = U_SUCCESS(status) ? ucnv_getName(converter, &status) : "";
    ucnv_close(converter);
    return U_SUCCESS(status) ? name : "";
}

}  // namespace qx_charset_test
