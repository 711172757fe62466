// Turning the text of a value into a field, for libraries that hand out nothing but characters.
#pragma once

#include <charconv>
#include <string>
#include <string_view>
#include <type_traits>

#include "support/Camera.h"

namespace bench {

template <typename T>
void assign(std::string_view text, T& field) {
    if constexpr (std::is_same_v<T, std::string>) {
        field.assign(text);
    } else if constexpr (std::is_same_v<std::remove_const_t<T>, Word>) {
        field.isTrue = saysTrue(text);
    } else if constexpr (std::is_same_v<T, bool>) {
        field = !text.empty() && text != "0";
    } else {
        std::from_chars(text.data(), text.data() + text.size(), field);
    }
}

}  // namespace bench
