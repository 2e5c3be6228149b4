/// @file DecoderCache.h
/// The process-wide cache that makes decoders and shares them by key. All operations may be called from any thread;
/// one lock serialises them, and making, opening and deleting a decoder happen inside it.
#pragma once

#include "engine/decoders/IDecoder.h"
#include "engine/platform/Export.h"

#include <string>

/// The decoder kept under @p key; made, initialised with @p prop and kept when there is none. A decoder that is found
/// is returned as it is: @p prop is neither compared nor applied, so the caller calls SetDecoderProperty() next. A
/// decoder whose file could not be opened is kept and returned like any other.
/// The extension of the path ("gif" or "swf" in any letter case) chooses the class before prop.decoderType does.
/// @return one reference for the caller; null when no class fits @p prop or memory is short (nothing is kept then).
QMX_API IDecoder* GetDecoder(std::wstring key, const tagDecProp& prop);
/// Forgets the decoder kept under @p key; clips that hold it keep it alive.
QMX_API void RemoveDecoder(std::wstring key);
/// Forgets every decoder, in ascending order of the keys.
QMX_API void RemoveAllDecoders();

/// Makes a decoder of the class that @p prop calls for, not yet initialised.
/// @return one reference, or null when there is no such class. Throws std::bad_alloc.
IDecoder* MakeDecoder(const tagDecProp& prop);
/// True when @p pDecoder is of the class that MakeDecoder() makes for @p prop. Clips without a file share a key, so
/// the cache may hand a clip the decoder of another kind of clip.
bool IsDecoderFor(IDecoder* pDecoder, const tagDecProp& prop);
