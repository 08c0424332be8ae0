/// The gallery's pages: everything is there to be seen.

#include "tests/toolkit/WidgetSupport.h"
#include "tools/orva-gallery/Family.h"
#include "tools/orva-gallery/GalleryWindow.h"

#include <vector>

#include <gtest/gtest.h>

namespace orva::gallery {
namespace {

using toolkit::TmyControl;

std::vector<RECT> PlacesOfChildren(const TmyControl& parent) {
    std::vector<RECT> places;
    for (const TmyControl* child = parent.FirstChild(); child != nullptr; child = child->NextSibling()) {
        places.push_back(child->Bounds());
    }
    return places;
}

/// Overlapping and cut-off samples would be missing in the photograph.
void ExpectApartAndInside(const TmyControl& parent) {
    const RECT client{0, 0, parent.GetClientWidth(), parent.GetClientHeight()};
    const std::vector<RECT> places = PlacesOfChildren(parent);
    for (std::size_t i = 0; i < places.size(); ++i) {
        RECT common{};
        UnionRect(&common, &client, &places[i]);
        EXPECT_EQ(common, client) << "at " << places[i];
        for (std::size_t k = 0; k < i; ++k) {
            EXPECT_FALSE(IntersectRect(&common, &places[i], &places[k])) << places[i] << " and " << places[k];
        }
    }
}

TEST(Gallery, ShowsAllFamiliesAndTheirSamplesApart) {
    const GalleryWindow window(GalleryPage::Widgets, 0);
    ExpectApartAndInside(window);
    int families = 0;
    for (const TmyControl* child = window.FirstChild(); child != nullptr; child = child->NextSibling()) {
        const auto* family = dynamic_cast<const Family*>(child);
        ASSERT_NE(family, nullptr);
        ++families;
        EXPECT_GE(PlacesOfChildren(*family).size(), 4u) << family->GetText().Text();
        ExpectApartAndInside(*family);
    }
    EXPECT_GE(families, 13);
}

TEST(Gallery, HasAPageOfLayouts) {
    const GalleryWindow window(GalleryPage::Layout, 0);
    EXPECT_EQ(PlacesOfChildren(window).size(), 2u);
    ExpectApartAndInside(window);
}

} // namespace
} // namespace orva::gallery
