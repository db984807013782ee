#pragma once
// A small owning string: a character buffer and a size that counts the NUL.
// Built from a C string (NIL gives the empty text) or by formatting; equality
// compares the text.

#include <cstddef>
#include <memory>

class EC_String {
public:
    EC_String();
    EC_String(const char* text); // NOLINT: implicit like the text it holds
    EC_String(const EC_String& other);
    EC_String(EC_String&& other) noexcept;
    EC_String& operator=(const EC_String& other);
    EC_String& operator=(EC_String&& other) noexcept;
    ~EC_String();

    static EC_String format(const char* format, ...) __attribute__((format(printf, 1, 2)));

    const char* c_str() const { return m_pBuffer.get(); }
    // Bytes held, the NUL included: 1 for the empty text.
    std::size_t size() const { return m_size; }
    std::size_t length() const { return m_size - 1; }
    bool empty() const { return m_size == 1; }

    friend bool operator==(const EC_String& a, const EC_String& b);
    friend bool operator==(const EC_String& a, const char* b);

private:
    void assign(const char* text, std::size_t length);

    std::unique_ptr<char[]> m_pBuffer;
    std::size_t m_size = 0;
};
