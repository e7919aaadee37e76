// The char16_t members of std::ctype, std::ctype_byname and std::numpunct that libstdc++ leaves
// undefined: "C" locale behaviour over ASCII, the base that libqxi18n's own facets refine.
#include <fl/i18n/facet.hpp>

#include <algorithm>

namespace std {

namespace {

constexpr char16_t ascii_limit = 0x80;

bool ascii_is(ctype_base::mask m, char16_t c)
{
    return c < ascii_limit && (ctype<char>::classic_table()[c] & m) != 0;
}

char16_t ascii_toupper(char16_t c) { return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - 0x20) : c; }
char16_t ascii_tolower(char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 0x20) : c; }
char16_t byte_widen(char c) { return static_cast<char16_t>(static_cast<unsigned char>(c)); }

// The "C" numeric atoms as the cache expects them, widened once.
template <size_t N>
void widen_atoms(const char* atoms, char16_t (&to)[N])
{
    std::transform(atoms, atoms + N, to, byte_widen);
}

}  // namespace

template <> ctype<char16_t>::~ctype() = default;

template <> bool ctype<char16_t>::do_is(mask m, char16_t c) const { return ascii_is(m, c); }

template <> const char16_t* ctype<char16_t>::do_is(const char16_t* low, const char16_t* high, mask* vec) const
{
    for (; low < high; ++low, ++vec)
        *vec = *low < ascii_limit ? ctype<char>::classic_table()[*low] : mask();
    return high;
}

template <> const char16_t* ctype<char16_t>::do_scan_is(mask m, const char16_t* low, const char16_t* high) const
{
    return std::find_if(low, high, [m](char16_t c) { return ascii_is(m, c); });
}

template <> const char16_t* ctype<char16_t>::do_scan_not(mask m, const char16_t* low, const char16_t* high) const
{
    return std::find_if_not(low, high, [m](char16_t c) { return ascii_is(m, c); });
}

template <> char16_t ctype<char16_t>::do_toupper(char16_t c) const { return ascii_toupper(c); }

template <> const char16_t* ctype<char16_t>::do_toupper(char16_t* low, const char16_t* high) const
{
    std::transform(low, const_cast<char16_t*>(high), low, ascii_toupper);
    return high;
}

template <> char16_t ctype<char16_t>::do_tolower(char16_t c) const { return ascii_tolower(c); }

template <> const char16_t* ctype<char16_t>::do_tolower(char16_t* low, const char16_t* high) const
{
    std::transform(low, const_cast<char16_t*>(high), low, ascii_tolower);
    return high;
}

template <> char16_t ctype<char16_t>::do_widen(char c) const { return byte_widen(c); }

template <> const char* ctype<char16_t>::do_widen(const char* low, const char* high, char16_t* to) const
{
    std::transform(low, high, to, byte_widen);
    return high;
}

template <> char ctype<char16_t>::do_narrow(char16_t c, char default_value) const
{
    return c < ascii_limit ? static_cast<char>(c) : default_value;
}

template <> const char16_t* ctype<char16_t>::do_narrow(const char16_t* low, const char16_t* high,
                                                      char default_value, char* to) const
{
    std::transform(low, high, to, [default_value](char16_t c) {
        return c < ascii_limit ? static_cast<char>(c) : default_value;
    });
    return high;
}

template <> ctype_byname<char16_t>::ctype_byname(const char*, size_t refs) : ctype<char16_t>(refs) {}

template <> numpunct<char16_t>::~numpunct() { delete _M_data; }

template <> void numpunct<char16_t>::_M_initialize_numpunct(__c_locale)
{
    if (!_M_data)
        _M_data = new __numpunct_cache<char16_t>;
    // Static texts: the cache frees its strings only when _M_allocated is set.
    _M_data->_M_grouping = "";
    _M_data->_M_grouping_size = 0;
    _M_data->_M_use_grouping = false;
    _M_data->_M_decimal_point = u'.';
    _M_data->_M_thousands_sep = u',';
    _M_data->_M_truename = u"true";
    _M_data->_M_truename_size = 4;
    _M_data->_M_falsename = u"false";
    _M_data->_M_falsename_size = 5;
    widen_atoms(__num_base::_S_atoms_out, _M_data->_M_atoms_out);
    widen_atoms(__num_base::_S_atoms_in, _M_data->_M_atoms_in);
}

}  // namespace std
