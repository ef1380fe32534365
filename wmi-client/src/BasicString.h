#pragma once

#include <windows.h>

#include <oleauto.h>

namespace orvel::shared::wmi {

/// A BSTR that frees itself.
class BasicString {
public:
    explicit BasicString(const wchar_t* text) : text(::SysAllocString(text)) {}
    BasicString(const BasicString&) = delete;
    BasicString& operator=(const BasicString&) = delete;
    ~BasicString() { ::SysFreeString(text); }
    operator BSTR() const { return text; }

private:
    BSTR text;
};

} // namespace orvel::shared::wmi
