#include "engine/clips/QMXAudioClip.h"

CQMXAudioClip::CQMXAudioClip() : CQMXSoundClip(QMXClipType_Audio) {}

CQMXAudioClip::~CQMXAudioClip() = default;
