/// A look inside the virtual sound card.
#pragma once

#include "audio/VirtualSoundCard.h"

namespace orva::audio {

struct VirtualSoundCardInspector {
    const VirtualSoundCard& card;

    [[nodiscard]] HANDLE Handle1() const { return card.virtualCardHandle1; }
    [[nodiscard]] HANDLE Handle2() const { return card.virtualCardHandle2; }
};

} // namespace orva::audio
