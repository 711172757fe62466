// The rule that every number scan of the system follows about the process's numeric locale. Knows
// nothing of the numbers themselves.
#pragma once

#include <string>

namespace dax {

/// While it lives, LC_NUMERIC is "C"; afterwards LC_NUMERIC bears the name that LC_CTYPE had at its
/// construction ("C" still when the system has no such numeric locale).
class NumericLocaleGuard {
public:
    NumericLocaleGuard();
    ~NumericLocaleGuard();
    NumericLocaleGuard(const NumericLocaleGuard&) = delete;
    NumericLocaleGuard& operator=(const NumericLocaleGuard&) = delete;

private:
    std::string m_characterLocale;
};

/// Gives LC_NUMERIC the name that LC_CTYPE has, as a guard's life does; quick when it has it.
void setNumericLocaleAsCharacterLocale();

}  // namespace dax
