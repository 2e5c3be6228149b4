/// @file unknwn.h
/// IUnknown and the interface-to-identifier mapping behind IID_PPV_ARGS.
#pragma once

#include <windows.h>

namespace pal
{
/// Identifier of interface @p T; specialised beside each interface by PAL_DECLARE_IID.
template <class T> struct InterfaceId;
} // namespace pal

/// Gives @p type its identifier; written at global scope right after the interface.
#define PAL_DECLARE_IID(type, name, d1, d2, d3, ...)                                                                   \
    inline constexpr IID name{d1, d2, d3, {__VA_ARGS__}};                                                              \
    template <> struct pal::InterfaceId<type>                                                                          \
    {                                                                                                                  \
        static constexpr const IID& value = name;                                                                      \
    }

/// Base of every reference-counted service object. Destruction happens through Release() only.
struct IUnknown
{
    /// @return S_OK with one reference in *ppObject, or E_NOINTERFACE with null there.
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) = 0;
    virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE Release() = 0;

protected:
    ~IUnknown() = default;
};
PAL_DECLARE_IID(IUnknown, IID_IUnknown, 0x00000000U, 0x0000, 0x0000, 0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46);

namespace pal
{
template <class T> constexpr const IID& IidOf(T**) noexcept
{
    return InterfaceId<T>::value;
}
template <class T> void** VoidPtr(T** pp) noexcept
{
    return reinterpret_cast<void**>(pp);
}
} // namespace pal

/// The two arguments (identifier, void**) of a typed interface request. The argument is evaluated once.
#define IID_PPV_ARGS(pp) ::pal::IidOf(decltype(pp){}), ::pal::VoidPtr(pp)
