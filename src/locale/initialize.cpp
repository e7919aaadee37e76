// initialize(): locale start-up, then the time-zone data directory for ICU, each once.
#include "common/retry_once.hpp"

#include <fl/filesystem/foundation/install_path.hpp>
#include <fl/i18n/environment.hpp>
#include <fl/i18n/initialize.hpp>
#include <fl/i18n/locale_management.hpp>

namespace fl::i18n {
namespace {

// std::call_once cannot be used: with g++ 12 a throwing first call leaves later calls hanging.
fl::detail::retry_once_flag time_zone_region;

void point_icu_at_time_zone_data()
{
    ustring directory = fl::i18n::getenv(std::string("QX_TZDATA_DIR"));
    if (directory.empty())
        directory = fl::filesystem::get_install_path() + u"/bin/icutzdata";
    if (directory.empty() || directory == u"DISABLE")
        return;
    // ICU reads the variable itself when it first loads zone data; a failure leaves ICU's default.
    fl::i18n::setenv("ICU_TIMEZONE_FILES_DIR", directory, 1, false);
}

}  // namespace

void initialize()
{
    initLcMgmtSystem();
    time_zone_region.call(point_icu_at_time_zone_data);
}

}  // namespace fl::i18n
