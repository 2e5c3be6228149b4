/// @file QMXAudioClip.h
/// A clip that plays an audio file.
#pragma once

#include "engine/clips/QMXSoundClip.h"

/// The sound of a file and nothing to see.
class QMX_API CQMXAudioClip : public CQMXSoundClip
{
public:
    CQMXAudioClip();
    ~CQMXAudioClip() override;
};
