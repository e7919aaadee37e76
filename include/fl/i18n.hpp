// Umbrella header: every exported header of fl::i18n.
#pragma once

#include <fl/i18n/character_handling.hpp>
#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion.hpp>
#include <fl/i18n/conversion_error.hpp>
#include <fl/i18n/converter.hpp>
#include <fl/i18n/ctype_error.hpp>
#include <fl/i18n/encoding_names.hpp>
#include <fl/i18n/environment.hpp>
#include <fl/i18n/export.hpp>
#include <fl/i18n/initialize.hpp>
#include <fl/i18n/lcctype.hpp>
#include <fl/i18n/locale.hpp>
#include <fl/i18n/locale_database_error.hpp>
#include <fl/i18n/locale_error.hpp>
#include <fl/i18n/locale_management.hpp>
#include <fl/i18n/locale_name.hpp>
#include <fl/i18n/natural_sort_error.hpp>
#include <fl/i18n/pattern_match.hpp>
#include <fl/i18n/regex_error.hpp>
#include <fl/i18n/scan.hpp>
#include <fl/i18n/text_compare.hpp>
#include <fl/i18n/transform.hpp>
#include <fl/i18n/trim.hpp>
#include <fl/i18n/ustring.hpp>
