#include "pal/media/Attributes.h"

#include <mfapi.h>

#include <algorithm>
#include <new>

namespace pal
{
const AttributeStore::Item* AttributeStore::Find(REFGUID key) const
{
    const auto it = std::find_if(m_items.begin(), m_items.end(), [&](const Item& item) { return item.key == key; });
    return it == m_items.end() ? nullptr : &*it;
}

HRESULT AttributeStore::GetUnknown(REFGUID key, REFIID iid, void** ppObject) const
{
    if (ppObject == nullptr)
        return E_POINTER;
    *ppObject = nullptr;
    UnknownRef held(nullptr);
    const HRESULT hr = Get(key, &held);
    if (FAILED(hr))
        return hr;
    return held.Get() != nullptr ? held.Get()->QueryInterface(iid, ppObject) : E_NOINTERFACE;
}

HRESULT AttributeStore::Set(REFGUID key, const AttributeValue& value)
{
    try
    {
        AttributeValue replaced = value; // ends outside the lock: its Release() is foreign code
        const std::lock_guard lock(m_lock);
        if (auto* const pItem = const_cast<Item*>(Find(key)))
            std::swap(pItem->value, replaced);
        else
            m_items.push_back({key, value});
        return S_OK;
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }
}

void AttributeStore::Delete(REFGUID key)
{
    AttributeValue removed; // ends outside the lock
    const std::lock_guard lock(m_lock);
    const auto it = std::find_if(m_items.begin(), m_items.end(), [&](const Item& item) { return item.key == key; });
    if (it != m_items.end())
    {
        std::swap(it->value, removed);
        m_items.erase(it);
    }
}

UINT32 AttributeStore::Count() const
{
    const std::lock_guard lock(m_lock);
    return static_cast<UINT32>(m_items.size());
}

void AttributeStore::Clear()
{
    std::vector<Item> removed; // ends outside the lock
    const std::lock_guard lock(m_lock);
    m_items.swap(removed);
}

HRESULT AttributeStore::CopyTo(IMFAttributes* pDestination) const
{
    std::vector<Item> items;
    try
    {
        const std::lock_guard lock(m_lock);
        items = m_items;
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }
    HRESULT hr = pDestination->DeleteAllItems();
    for (const Item& item : items)
    {
        if (FAILED(hr))
            break;
        if (const auto* const p32 = std::get_if<UINT32>(&item.value))
            hr = pDestination->SetUINT32(item.key, *p32);
        else if (const auto* const p64 = std::get_if<UINT64>(&item.value))
            hr = pDestination->SetUINT64(item.key, *p64);
        else if (const auto* const pDouble = std::get_if<double>(&item.value))
            hr = pDestination->SetDouble(item.key, *pDouble);
        else if (const auto* const pGuid = std::get_if<GUID>(&item.value))
            hr = pDestination->SetGUID(item.key, *pGuid);
        else if (const auto* const pUnknown = std::get_if<UnknownRef>(&item.value))
            hr = pDestination->SetUnknown(item.key, pUnknown->Get());
    }
    return hr;
}
} // namespace pal
