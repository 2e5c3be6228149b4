/// @file propsys.h
/// Properties of a file, by key.
#pragma once

#include <propidl.h>

struct PROPERTYKEY
{
    GUID fmtid; ///< set of properties
    DWORD pid;  ///< which of the set
};
using REFPROPERTYKEY = const PROPERTYKEY&;

inline bool operator==(const PROPERTYKEY& a, const PROPERTYKEY& b) noexcept
{
    return a.pid == b.pid && a.fmtid == b.fmtid;
}

struct IPropertyStore : public IUnknown
{
    /// @return S_OK also for a property that the file has not: *pValue is VT_EMPTY then. The caller clears it.
    virtual HRESULT STDMETHODCALLTYPE GetValue(REFPROPERTYKEY key, PROPVARIANT* pValue) = 0;

protected:
    ~IPropertyStore() = default;
};
PAL_DECLARE_IID(IPropertyStore, IID_IPropertyStore, 0x886D8EEBU, 0x8CF2, 0x4446, 0x8D, 0x02, 0xCD, 0xBA, 0x1D, 0xBD,
                0xCF, 0x99);
