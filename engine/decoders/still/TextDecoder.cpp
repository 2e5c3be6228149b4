#include "engine/decoders/still/TextDecoder.h"

#include "engine/platform/NullReference.h"

#include <new>

CTextDecoder::CTextDecoder() = default;
CTextDecoder::CTextDecoder(const CTextDecoder& other) = default;
CTextDecoder& CTextDecoder::operator=(const CTextDecoder& other) = default;

CTextDecoder::~CTextDecoder()
{
    m_canvas.Close();
}

bool CTextDecoder::Initialize(const tagDecProp& prop)
{
    if (IsNullReference(&prop))
        return true;
    m_canvas.Close();
    CDecoder::Initialize(prop);
    m_nWidth = prop.width;
    m_nHeight = prop.height;
    try
    {
        m_canvas.Open(m_nWidth, m_nHeight);
    }
    catch (const std::bad_alloc&)
    {
        m_canvas.Close(); // frames are null then, and the next record of another size tries again
    }
    return true;
}

void CTextDecoder::SetDecoderProperty(const tagDecProp& prop)
{
    CDecoder::SetDecoderProperty(prop);
    if (!IsNullReference(&prop) && (prop.width != m_nWidth || prop.height != m_nHeight))
        Initialize(prop);
}
