// The static entry points of QxLocale and QxLcOptDataCtx.
#include "locale_context.hpp"

namespace fl::i18n {
namespace {

std::string ascii_lower(std::string text)
{
    for (char& c : text)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return text;
}

// The value under `key`, or QxLcDataNotFound.
template <class Map>
const typename Map::mapped_type& find_or_throw(const Map& map, const typename Map::key_type& key)
{
    const auto it = map.find(key);
    if (it == map.end())
        detail::throw_data_not_found();
    return it->second;
}

std::unique_ptr<QxLocaleImpl> from_name(const std::string& name)
{
    return std::make_unique<QxLocaleImpl>(detail::locale_context().registry, name);
}

std::unique_ptr<QxLocaleImpl> copy_of(const QxLocale& base)
{
    return std::make_unique<QxLocaleImpl>(detail::locale_context().registry, base);
}

std::shared_ptr<QxLocale> with_categories(std::unique_ptr<QxLocaleImpl> locale,
                                          const std::vector<QxLocale::CategoryContext>& list)
{
    for (const auto& item : list)
        locale->set_category_from_name(item.category, item.name);
    return std::shared_ptr<QxLocale>(std::move(locale));
}

}  // namespace

// One allocation for the object and its count: a locale is small and made often.
std::shared_ptr<QxLocale> QxLocale::createLocale(const std::string& name)
{
    return std::make_shared<QxLocaleImpl>(detail::locale_context().registry, name);
}

std::shared_ptr<QxLocale> QxLocale::createLocale(const QxLocale& base)
{
    return std::make_shared<QxLocaleImpl>(detail::locale_context().registry, base);
}

std::shared_ptr<QxLocale> QxLocale::createLocale(const std::string& name, LcCategory category,
                                                 const std::string& category_name)
{
    return with_categories(from_name(name), {{category, category_name}});
}

std::shared_ptr<QxLocale> QxLocale::createLocale(const QxLocale& base, LcCategory category,
                                                 const std::string& category_name)
{
    return with_categories(copy_of(base), {{category, category_name}});
}

std::shared_ptr<QxLocale> QxLocale::createLocale(const std::string& name, const std::vector<CategoryContext>& list)
{
    return with_categories(from_name(name), list);
}

std::shared_ptr<QxLocale> QxLocale::createLocale(const QxLocale& base, const std::vector<CategoryContext>& list)
{
    return with_categories(copy_of(base), list);
}

std::shared_ptr<QxLocale> QxLocale::createLocale(const QxLocale& base, LcCategory category, const QxLocale& other)
{
    auto locale = copy_of(base);
    locale->set_category(other.getName(category), other.getModifiers(category), category);
    return std::shared_ptr<QxLocale>(std::move(locale));
}

std::shared_ptr<QxLocale> QxLocale::createLocaleWithCForNumeric(const std::string& name)
{
    auto locale = from_name(name);
    locale->set_category("en_US_POSIX", std::string(), lc_numeric);
    return std::shared_ptr<QxLocale>(std::move(locale));
}

const QxLocale& QxLocale::classic()
{
    auto& context = detail::locale_context();
    std::lock_guard<std::mutex> lock(context.global_mutex);
    return *context.locale_stack.front()->locale;
}

const QxLocale& QxLocale::global()
{
    auto& context = detail::locale_context();
    std::lock_guard<std::mutex> lock(context.global_mutex);
    return *context.locale_stack.back()->locale;
}

const QxLocale& QxLocale::system() { return *detail::locale_context().system_locale_ref.load(); }

QxLocale::LcCategory QxLocale::getLcCategory(const std::string& name)
{
    return find_or_throw(detail::locale_context().category_by_name, ascii_lower(name));
}

std::string QxLocale::getLcCategoryName(LcCategory category)
{
    return find_or_throw(detail::locale_context().name_by_category, category);
}

QxLcOptDataCtx::LcOptDataType QxLcOptDataCtx::getOptDataType(const std::string& name)
{
    return find_or_throw(detail::locale_context().opt_data_by_name, ascii_lower(name));
}

}  // namespace fl::i18n
