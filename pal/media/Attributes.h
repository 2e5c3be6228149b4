/// @file Attributes.h
/// The key-value store behind attributes, media types and samples.
#pragma once

#include "pal/kernel/ComObject.h"

#include <mferror.h>
#include <mfobjects.h>

#include <mutex>
#include <variant>
#include <vector>

namespace pal
{
/// One reference on a foreign object.
class UnknownRef
{
public:
    explicit UnknownRef(IUnknown* p) : m_p(p) { Add(); }
    UnknownRef(const UnknownRef& other) : m_p(other.m_p) { Add(); }
    UnknownRef& operator=(const UnknownRef& other)
    {
        UnknownRef copy(other);
        std::swap(m_p, copy.m_p);
        return *this;
    }
    ~UnknownRef()
    {
        if (m_p != nullptr)
            m_p->Release();
    }
    IUnknown* Get() const { return m_p; }

private:
    void Add() const
    {
        if (m_p != nullptr)
            m_p->AddRef();
    }
    IUnknown* m_p; // owns one reference, may be null
};

using AttributeValue = std::variant<UINT32, UINT64, double, GUID, UnknownRef>;

/// Sets are small (a media type has about a dozen items), so a vector searched from the front is the whole index.
/// Threads : every operation locks; a set may be shared.
class AttributeStore
{
public:
    /// @retval MF_E_ATTRIBUTENOTFOUND, MF_E_INVALIDTYPE, E_POINTER
    template <class T> HRESULT Get(REFGUID key, T* pValue) const
    {
        if (pValue == nullptr)
            return E_POINTER;
        const std::lock_guard lock(m_lock);
        const Item* const pItem = Find(key);
        if (pItem == nullptr)
            return MF_E_ATTRIBUTENOTFOUND;
        const T* const pHeld = std::get_if<T>(&pItem->value);
        if (pHeld == nullptr)
            return MF_E_INVALIDTYPE;
        *pValue = *pHeld;
        return S_OK;
    }
    HRESULT GetUnknown(REFGUID key, REFIID iid, void** ppObject) const;
    HRESULT Set(REFGUID key, const AttributeValue& value);
    void Delete(REFGUID key);
    UINT32 Count() const;
    /// Replaces everything in @p pDestination.
    HRESULT CopyTo(IMFAttributes* pDestination) const;
    void Clear();

private:
    struct Item
    {
        GUID key;
        AttributeValue value;
    };
    const Item* Find(REFGUID key) const;

    mutable std::mutex m_lock;
    std::vector<Item> m_items;
};

/// Implements the IMFAttributes slots of @p Base over an AttributeStore.
template <class Base> class AttributesImpl : public Base
{
public:
    HRESULT STDMETHODCALLTYPE GetUINT32(REFGUID key, UINT32* pValue) override { return m_store.Get(key, pValue); }
    HRESULT STDMETHODCALLTYPE GetUINT64(REFGUID key, UINT64* pValue) override { return m_store.Get(key, pValue); }
    HRESULT STDMETHODCALLTYPE GetDouble(REFGUID key, double* pValue) override { return m_store.Get(key, pValue); }
    HRESULT STDMETHODCALLTYPE GetGUID(REFGUID key, GUID* pValue) override { return m_store.Get(key, pValue); }
    HRESULT STDMETHODCALLTYPE GetUnknown(REFGUID key, REFIID iid, void** ppObject) override
    {
        return m_store.GetUnknown(key, iid, ppObject);
    }
    HRESULT STDMETHODCALLTYPE DeleteItem(REFGUID key) override
    {
        m_store.Delete(key);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE DeleteAllItems() override
    {
        m_store.Clear();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetUINT32(REFGUID key, UINT32 value) override { return m_store.Set(key, value); }
    HRESULT STDMETHODCALLTYPE SetUINT64(REFGUID key, UINT64 value) override { return m_store.Set(key, value); }
    HRESULT STDMETHODCALLTYPE SetDouble(REFGUID key, double value) override { return m_store.Set(key, value); }
    HRESULT STDMETHODCALLTYPE SetGUID(REFGUID key, REFGUID value) override { return m_store.Set(key, value); }
    HRESULT STDMETHODCALLTYPE SetUnknown(REFGUID key, IUnknown* pObject) override
    {
        return m_store.Set(key, UnknownRef(pObject));
    }
    HRESULT STDMETHODCALLTYPE GetCount(UINT32* pCount) override
    {
        if (pCount == nullptr)
            return E_POINTER;
        *pCount = m_store.Count();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE CopyAllItems(IMFAttributes* pDestination) override
    {
        if (pDestination == nullptr)
            return E_POINTER;
        return pDestination == static_cast<IMFAttributes*>(this) ? S_OK : m_store.CopyTo(pDestination);
    }

protected:
    ~AttributesImpl() = default;
    AttributeStore m_store;
};
} // namespace pal
