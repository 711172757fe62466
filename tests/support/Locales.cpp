// See the header.
#include "support/Locales.h"

#include <stdexcept>

namespace thermika_test {

ScopedLocale::ScopedLocale(std::initializer_list<std::pair<int, const char*>> categories)
    : m_former(std::setlocale(LC_ALL, nullptr)) {
    std::setlocale(LC_ALL, "C");
    for (const auto& [category, name] : categories) {
        if (std::setlocale(category, name) != nullptr) continue;
        std::setlocale(LC_ALL, m_former.c_str());
        throw std::runtime_error(std::string("the locale ") + name +
                                 " is missing (install the package locales-all)");
    }
}

ScopedLocale::~ScopedLocale() { std::setlocale(LC_ALL, m_former.c_str()); }

std::string numericLocale() { return std::setlocale(LC_NUMERIC, nullptr); }

}  // namespace thermika_test
