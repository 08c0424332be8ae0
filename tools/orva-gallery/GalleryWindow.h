/// The gallery's window.
#pragma once

#include "toolkit/TmyComponent.h"

namespace orva::gallery {

/// What the window shows.
enum class GalleryPage { Widgets, Layout };

/// A window that shows what the toolkit can, for a person to look at and for a photograph. Its close ends the
/// program.
class GalleryWindow : public toolkit::TmyComponent {
public:
    /// \param milliseconds  time after which it closes by itself; 0 never
    GalleryWindow(GalleryPage page, unsigned milliseconds);

    void OnTimer(UINT_PTR id) override;
};

} // namespace orva::gallery
