#pragma once

#include <concepts>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace TW2::json
{
/// Writes one JSON document, indented, value by value.
///
///     Writer json(std::cout);
///     json.beginObject();
///     json.member("name", mesh.name);
///     json.list("sizes", sizes);
///     json.objects("parts", parts, [&](const Part& part) { json.member("name", part.name); });
///     json.endObject();
///
/// The document ends with a line end. Text is taken as UTF-8; bytes that are none become U+FFFD. Numbers that JSON does
/// not have (infinite, not a number) become null.
class Writer
{
public:
    explicit Writer(std::ostream& stream) : m_stream(stream) {}

    /// @name Structure
    /// @{
    void beginObject() { begin('{'); }
    void endObject() { end('}'); }
    void beginArray() { begin('['); }
    void endArray() { end(']'); }
    /// The name of the next value; only inside an object.
    void key(std::string_view name);
    /// @}

    /// @name Values
    /// @{
    void value(std::string_view text);
    void value(const char* text) { value(std::string_view(text)); }
    void value(bool truth);
    void value(double number);
    void value(float number);
    template <std::integral T>
    void value(T number)
    {
        separate();
        m_stream << +number;
        finish();
    }
    void null();
    template <typename T>
    void member(std::string_view name, const T& memberValue)
    {
        key(name);
        value(memberValue);
    }
    /// An array of the values of a list.
    template <typename List>
    void list(std::string_view name, const List& values)
    {
        key(name);
        beginArray();
        for (const auto& each : values)
        {
            value(each);
        }
        endArray();
    }
    /// An array with an object for each element of a list, of which `writeMembers` writes the members.
    template <typename List, typename WriteMembers>
    void objects(std::string_view name, const List& elements, const WriteMembers& writeMembers)
    {
        key(name);
        beginArray();
        for (const auto& each : elements)
        {
            beginObject();
            writeMembers(each);
            endObject();
        }
        endArray();
    }
    /// @}

    /// `text` in quotes, with everything escaped that JSON wants escaped.
    static std::string quote(std::string_view text);

private:
    void begin(char bracket);
    void end(char bracket);
    void separate();
    void finish();
    void breakLine();
    void writeNumber(double number, int digits);

    std::ostream& m_stream;
    std::vector<bool> m_hasElements;  // of the open objects and arrays
    bool m_bAfterKey = false;
};
}  // namespace TW2::json
