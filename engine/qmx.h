/// @file qmx.h
/// Everything that a host of the engine needs.
///
/// The host starts the platform's media services (MFStartup) before it asks for pictures, makes one cleaner and its
/// documents, fills them with tracks and clips, and asks the tracks for frames.
#pragma once

#include "engine/clips/IQMXBaseClip.h"
#include "engine/clips/QMXAudioClip.h"
#include "engine/clips/QMXBaseClip.h"
#include "engine/clips/QMXCameraClip.h"
#include "engine/clips/QMXColorClip.h"
#include "engine/clips/QMXImageClip.h"
#include "engine/clips/QMXKeystrokeClip.h"
#include "engine/clips/QMXTXClip.h"
#include "engine/clips/QMXTitleClip.h"
#include "engine/clips/QMXVideoClip.h"
#include "engine/decoders/Decoder.h"
#include "engine/decoders/DecoderCache.h"
#include "engine/decoders/DecoderProp.h"
#include "engine/decoders/IDecoder.h"
#include "engine/decoders/media/AudioDecoder.h"
#include "engine/decoders/media/AudioInfo.h"
#include "engine/decoders/media/CameraClipDecoder.h"
#include "engine/decoders/media/MediaInfo.h"
#include "engine/decoders/media/VideoDecoder.h"
#include "engine/decoders/media/VideoInfo.h"
#include "engine/decoders/still/GifDecoder.h"
#include "engine/decoders/still/ImageDecoder.h"
#include "engine/decoders/still/KeystrokeDecoder.h"
#include "engine/decoders/still/TitleDecoder.h"
#include "engine/model/ClipFactory.h"
#include "engine/model/IQMXCleaner.h"
#include "engine/model/IQMXDocument.h"
#include "engine/model/IQMXTrack.h"
#include "engine/platform/RefPtr.h"
#include "engine/platform/SampleBuffer.h"
