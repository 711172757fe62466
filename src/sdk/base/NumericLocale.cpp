// Sets LC_NUMERIC around the scan of a number.
#include "sdk/base/NumericLocale.h"

#include <clocale>
#include <cstring>

namespace dax {

NumericLocaleGuard::NumericLocaleGuard() : m_characterLocale(std::setlocale(LC_CTYPE, nullptr)) {
    std::setlocale(LC_NUMERIC, "C");
}

// Deliberate: the numeric category gets the character category's name, so a program that set only
// LC_NUMERIC finds it changed after any scan.
NumericLocaleGuard::~NumericLocaleGuard() { std::setlocale(LC_NUMERIC, m_characterLocale.c_str()); }

void setNumericLocaleAsCharacterLocale() {
    const char* const numeric = std::setlocale(LC_NUMERIC, nullptr);
    const char* const character = std::setlocale(LC_CTYPE, nullptr);
    if (numeric != character && std::strcmp(numeric, character) != 0)
        const NumericLocaleGuard guard;
}

}  // namespace dax
