// Locale facets for char16_t streams: ICU classification and case mapping, the classic locale's
// number punctuation, and a per-thread std::locale holding them with num_put and num_get.
#pragma once

#include <fl/i18n/export.hpp>
#include <fl/i18n/ustring.hpp>

#include <cstddef>
#include <locale>
#include <string>

namespace fl::i18n::facet {

template <class CharT>
class ctype_facet;

/// Classification and case mapping of UTF-16 units by ICU, surrogate pairs taken together in the
/// range forms (a pair gets the mask of its code point in both units; a lone surrogate is one
/// character). Case mapping is ICU's simple one-to-one mapping.
///
/// Narrowing and widening go through a converter for `encoding`, opened per call with ICU's
/// default call-backs, so the facet holds no ICU object and can serve every stream of its thread.
/// narrow(c, default) gives the first byte the encoding writes for `c`, 0 if none (the default is
/// not used); widen(c) likewise gives the first unit. The range forms write one output element per
/// input element: the converted text cut to that length, the rest filled with the default (narrow)
/// or 0 (widen). Throws CvtInvalidEncodingName, CvtSizeTooLarge for a range of 2^31 elements or
/// more, and CvtInvalidCharacter / CvtConversionFailure for ICU failures.
template <>
class QXI18N_API ctype_facet<char16_t> : public std::ctype_byname<char16_t> {
public:
    /// `encoding` is an ICU encoding name used by narrow() and widen().
    explicit ctype_facet(const std::string& encoding, std::size_t refs = 0);
    ~ctype_facet() override;

    const std::string& encoding() const noexcept { return encoding_; }

protected:
    bool do_is(mask m, char16_t c) const override;
    const char16_t* do_is(const char16_t* low, const char16_t* high, mask* vec) const override;
    const char16_t* do_scan_is(mask m, const char16_t* low, const char16_t* high) const override;
    const char16_t* do_scan_not(mask m, const char16_t* low, const char16_t* high) const override;
    char16_t do_toupper(char16_t c) const override;
    const char16_t* do_toupper(char16_t* low, const char16_t* high) const override;
    char16_t do_tolower(char16_t c) const override;
    const char16_t* do_tolower(char16_t* low, const char16_t* high) const override;
    char16_t do_widen(char c) const override;
    const char* do_widen(const char* low, const char* high, char16_t* to) const override;
    char do_narrow(char16_t c, char default_value) const override;
    const char16_t* do_narrow(const char16_t* low, const char16_t* high, char default_value,
                              char* to) const override;

private:
    std::string encoding_;
};

template <class CharT>
class numpunct_facet;

/// Number punctuation for char16_t streams: the decimal point, thousands separator, grouping and
/// true/false names of the classic locale, whatever the global locale is.
template <>
class QXI18N_API numpunct_facet<char16_t> : public std::numpunct_byname<char16_t> {
public:
    explicit numpunct_facet(std::size_t refs = 0);
    ~numpunct_facet() override;

protected:
    char16_t do_decimal_point() const override;
    char16_t do_thousands_sep() const override;
    std::string do_grouping() const override;
    ustring do_truename() const override;
    ustring do_falsename() const override;

private:
    char16_t decimal_point_;
    char16_t thousands_sep_;
    std::string grouping_;
    ustring truename_;
    ustring falsename_;
};

/// The calling thread's locale for char16_t streams: the classic locale plus the two facets above
/// (for the global locale's encoding as it stood at the thread's first call) and num_put/num_get
/// for char16_t. Made once per thread and freed at thread exit; later calls return the same object.
QXI18N_API const std::locale& get_global_std_locale();

}  // namespace fl::i18n::facet

// libstdc++ declares the char16_t members of std::ctype, std::ctype_byname and std::numpunct but
// compiles them only for char and wchar_t. libqxi18n defines them, so that the two facets above
// have complete bases and num_put / num_get for char16_t instantiate in every user of the header.
// The std::ctype<char16_t> base on its own classifies and converts ASCII only, as the "C" locale
// does; the facets above override all of it.
#if defined(__GLIBCXX__)
namespace std {
template <> ctype<char16_t>::~ctype();
template <> bool ctype<char16_t>::do_is(mask m, char16_t c) const;
template <> const char16_t* ctype<char16_t>::do_is(const char16_t* low, const char16_t* high, mask* vec) const;
template <> const char16_t* ctype<char16_t>::do_scan_is(mask m, const char16_t* low, const char16_t* high) const;
template <> const char16_t* ctype<char16_t>::do_scan_not(mask m, const char16_t* low, const char16_t* high) const;
template <> char16_t ctype<char16_t>::do_toupper(char16_t c) const;
template <> const char16_t* ctype<char16_t>::do_toupper(char16_t* low, const char16_t* high) const;
template <> char16_t ctype<char16_t>::do_tolower(char16_t c) const;
template <> const char16_t* ctype<char16_t>::do_tolower(char16_t* low, const char16_t* high) const;
template <> char16_t ctype<char16_t>::do_widen(char c) const;
template <> const char* ctype<char16_t>::do_widen(const char* low, const char* high, char16_t* to) const;
template <> char ctype<char16_t>::do_narrow(char16_t c, char default_value) const;
template <> const char16_t* ctype<char16_t>::do_narrow(const char16_t* low, const char16_t* high,
                                                      char default_value, char* to) const;
/// The name is not used: the facets of libqxi18n take their data from ICU and the classic locale.
template <> ctype_byname<char16_t>::ctype_byname(const char* name, size_t refs);
template <> numpunct<char16_t>::~numpunct();
/// Fills the cache with the "C" punctuation; a named C locale is not consulted.
template <> void numpunct<char16_t>::_M_initialize_numpunct(__c_locale cloc);
}  // namespace std
#endif
