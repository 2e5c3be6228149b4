#include "companions/swfrenderer/SwfRenderObj.h"

#include <new>

ISWFRenderObj* CreateSWFRenderObj()
{
    return new (std::nothrow) CSWFRenderObj;
}
