// The locale object: six named categories, an encoding and a terminal encoding, plus fallback chains.
#pragma once

#include <fl/i18n/export.hpp>
#include <fl/i18n/locale_error.hpp>
#include <fl/i18n/ustring.hpp>

#include <boost/noncopyable.hpp>

#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace fl::i18n {

/// The kinds of optional locale data that QxLocale::getLocaleData answers.
class QXI18N_API QxLcOptDataCtx {
public:
    enum LcOptDataType : std::int32_t {
        jvmencoding = 0,         ///< the encoding's name for the JVM, else its standard name
        termencoding = 1,        ///< the terminal encoding, else the encoding
        terminputencoding = 2,   ///< as termencoding
        termoutputencoding = 3,  ///< as termencoding
        papersize = 4,           ///< QxLocale::PaperSize of the time category
        unittype = 5,            ///< QxLocale::UnitType of the time category
    };

    /// Looks up a kind by name, ignoring ASCII case ("PaperSize" is papersize).
    /// Throws QxLcDataNotFound for an unknown name.
    static LcOptDataType getOptDataType(const std::string& name);
};

/// An immutable locale. Build one with createLocale; share it freely between threads.
/// Locale names are ASCII: "language[-Script][_TERRITORY][.codeset][@modifier...]".
class QXI18N_API QxLocale : private boost::noncopyable {
public:
    enum LcCategory : std::int32_t {
        lc_ctype = 0,
        lc_collate = 1,
        lc_time = 2,
        lc_numeric = 3,
        lc_monetary = 4,
        lc_messages = 5,
    };

    /// One category and the locale name it is to take.
    struct CategoryContext {
        LcCategory category;
        std::string name;
    };

    enum PaperSize : std::int32_t { paper_other = 0, paper_a4 = 1 };
    enum UnitType : std::int32_t { unit_other = 0, unit_si = 1, unit_uk = 2 };
    using LocaleData = std::variant<std::string, PaperSize, UnitType>;

    virtual ~QxLocale();

    /// Same category names and modifiers in all six categories, and the same encoding.
    /// The terminal encoding is not compared.
    virtual bool operator==(const QxLocale& other) const = 0;
    virtual bool operator!=(const QxLocale& other) const = 0;
    /// The canonical name of a category, e.g. "de_DE", "zh-Hant_TW", "en_US_POSIX".
    virtual std::string getName(LcCategory category) const = 0;
    /// form 1: the language alone ("zh"); any other form: language and script ("zh-Hant").
    virtual std::string getLanguage(LcCategory category, int form) const = 0;
    virtual std::string getTerritory(LcCategory category) const = 0;
    /// The modifiers joined by "@", without a leading "@".
    virtual std::string getModifiers(LcCategory category) const = 0;
    /// Extensions and private-use subtags, each introduced by "-".
    virtual std::string getExtras(LcCategory category) const = 0;
    /// The standard name of the locale's encoding.
    virtual std::string getEncoding() const = 0;
    /// The default encoding of the ctype category's locale, whatever encoding this locale has.
    virtual std::string getDefaultEncoding() const = 0;
    /// Throws QxLcInvLcArgument for a type outside QxLcOptDataCtx::LcOptDataType.
    virtual LocaleData getLocaleData(QxLcOptDataCtx::LcOptDataType type) const = 0;

    /// Builds a locale from a name; each category takes the canonical name.
    /// Throws QxLcInvLcArgument for an empty name, QxLcInvLcName for a bad name or codeset.
    static std::shared_ptr<QxLocale> createLocale(const std::string& name);
    /// A copy of `base`; an empty terminal encoding becomes the encoding.
    static std::shared_ptr<QxLocale> createLocale(const QxLocale& base);
    /// From a name, then `category` takes `category_name` (its codeset is checked, then dropped).
    static std::shared_ptr<QxLocale> createLocale(const std::string& name, LcCategory category,
                                                  const std::string& category_name);
    static std::shared_ptr<QxLocale> createLocale(const QxLocale& base, LcCategory category,
                                                  const std::string& category_name);
    /// From a name, then each listed category in list order.
    static std::shared_ptr<QxLocale> createLocale(const std::string& name, const std::vector<CategoryContext>& list);
    static std::shared_ptr<QxLocale> createLocale(const QxLocale& base, const std::vector<CategoryContext>& list);
    /// A copy of `base` whose `category` takes the name and modifiers of that category in `other`.
    static std::shared_ptr<QxLocale> createLocale(const QxLocale& base, LcCategory category, const QxLocale& other);
    /// From a name, with the numeric category "en_US_POSIX".
    static std::shared_ptr<QxLocale> createLocaleWithCForNumeric(const std::string& name);

    /// The classic locale: "en_US_POSIX" (messages "en_US"), UTF-8. Valid for the process's life.
    static const QxLocale& classic();
    /// The current global locale. The reference stays valid after the global locale changes.
    static const QxLocale& global();
    /// The locale derived from the process's settings; the classic locale until start-up.
    static const QxLocale& system();

    /// "ctype", "collate", "time", "numeric", "monetary", "messages", in any ASCII case.
    /// Throws QxLcDataNotFound for any other name.
    static LcCategory getLcCategory(const std::string& name);
    /// Throws QxLcDataNotFound for a value outside LcCategory.
    static std::string getLcCategoryName(LcCategory category);

protected:
    QxLocale() = default;
};

/// The messages category's name cut at each "_" from the right, ending in the classic language "en":
/// "ja_JP" gives "ja_JP", "ja", "en". The script stays with its language ("zh-Hant_TW", "zh-Hant").
QXI18N_API std::vector<ustring> get_fallback_locales(const QxLocale& locale);
/// The same chain ending in an empty string instead of the classic language.
QXI18N_API std::vector<ustring> get_fallback_locales_with_empty_default(const QxLocale& locale);

}  // namespace fl::i18n
