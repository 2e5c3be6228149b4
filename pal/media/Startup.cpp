#include <mfapi.h>

extern "C" HRESULT MFStartup(DWORD version, DWORD)
{
    return version == MF_VERSION ? S_OK : E_INVALIDARG;
}

extern "C" HRESULT MFShutdown()
{
    return S_OK;
}
