#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Zantrix::Cli {

/// What is wrong with a JSON text, with the line.
class JsonError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Walks through a JSON text (RFC 8259) without building anything: the caller asks for what it expects next.
///
///     cursor.beginObject();
///     for (std::string key; cursor.nextMember(key);) {
///         key == "name" ? name = cursor.readString() : cursor.skipValue();
///     }
///     cursor.expectEnd();
///
/// All operations throw `JsonError` when the text is not what was asked for; the cursor is of no use after that.
class JsonCursor {
public:
    /// @param text  UTF-8, which must outlive the cursor
    /// @throw JsonError  when it is not UTF-8
    explicit JsonCursor(std::string_view text);

    /// The first character of the next value: one of { [ " - 0 to 9 t f n, if it is any.
    char peek();

    void beginObject();
    /// Goes to the value of the next member; false, behind the object, when there is none.
    bool nextMember(std::string& key);

    void beginArray();
    /// Goes to the next item; false, behind the array, when there is none.
    bool nextItem();

    std::string readString();
    double readNumber();
    /// Steps over any value. Values nested deeper than 64 are refused.
    void skipValue();

    /// Makes sure that nothing follows.
    void expectEnd();

    /// @throw JsonError  always, with the line
    [[noreturn]] void fail(const std::string& what) const;

private:
    void skipBlanks();
    bool takeIf(char c);
    void expect(char c);
    void begin(char opening);
    bool next(char closing);
    void readEscape(std::string& text);
    unsigned readHex();
    void skip(unsigned depth);

    std::string_view m_text;
    std::size_t m_uiPosition = 0;
    bool m_bIsFirst = false;  // nothing of the innermost object or array was taken yet
};

}  // namespace Zantrix::Cli
