#include <platform/runtime/number.h>

#if !defined(__cpp_lib_to_chars)
#include <locale.h>  // NOLINT(modernize-deprecated-headers): newlocale is not in <clocale>
#include <stdlib.h>  // NOLINT(modernize-deprecated-headers): neither is strtod_l in <cstdlib>

#include <cmath>
#include <string>
#endif

namespace
{
#if defined(__cpp_lib_to_chars)
template <typename T>
std::from_chars_result read(const char* begin, const char* end, T& value) noexcept
{
    return std::from_chars(begin, end, value);
}
#else
float convert(const char* text, char** end, locale_t locale, float) noexcept
{
    return strtof_l(text, end, locale);
}
double convert(const char* text, char** end, locale_t locale, double) noexcept
{
    return strtod_l(text, end, locale);
}

/// How many characters belong to a decimal number; strtod would take blanks, signs, words and hexadecimal digits too.
const char* findEnd(const char* begin, const char* end) noexcept
{
    const char* at = begin;
    const auto skipDigits = [&at, end]
    {
        const char* const first = at;
        while (at != end && *at >= '0' && *at <= '9')
        {
            ++at;
        }
        return at != first;
    };
    at += at != end && *at == '-' ? 1 : 0;
    bool any = skipDigits();
    if (at != end && *at == '.')
    {
        ++at;
        any = skipDigits() || any;
    }
    if (!any)
    {
        return begin;
    }
    if (at != end && (*at == 'e' || *at == 'E'))
    {
        const char* const mantissaEnd = at++;
        at += at != end && (*at == '+' || *at == '-') ? 1 : 0;
        at = skipDigits() ? at : mantissaEnd;
    }
    return at;
}

template <typename T>
std::from_chars_result read(const char* begin, const char* end, T& value) noexcept
{
    const char* const numberEnd = findEnd(begin, end);
    if (numberEnd == begin)
    {
        return {begin, std::errc::invalid_argument};
    }
    static const locale_t classic = newlocale(LC_ALL_MASK, "C", locale_t{});
    const std::string text(begin, numberEnd);
    char* rest = nullptr;
    const T number = convert(text.c_str(), &rest, classic, T());
    const bool isZero = text.find_first_of("123456789") == std::string::npos ||
                        text.find_first_of("eE") < text.find_first_of("123456789");
    if (std::isinf(number) || (number == T(0) && !isZero))
    {
        return {numberEnd, std::errc::result_out_of_range};
    }
    value = number;
    return {numberEnd, std::errc()};
}
#endif
}  // namespace

std::from_chars_result S_fromChars(const char* begin, const char* end, float& value) noexcept
{
    return read(begin, end, value);
}

std::from_chars_result S_fromChars(const char* begin, const char* end, double& value) noexcept
{
    return read(begin, end, value);
}
