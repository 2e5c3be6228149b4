/// @file ReturnIfFailed.h
/// Passes the first failing status code on.
#pragma once

#include <windows.h>

#define QMX_RETURN_IF_FAILED(expr)                                                                                     \
    do                                                                                                                 \
    {                                                                                                                  \
        if (const HRESULT hr_ = (expr); FAILED(hr_))                                                                   \
            return hr_;                                                                                                \
    } while (false)
