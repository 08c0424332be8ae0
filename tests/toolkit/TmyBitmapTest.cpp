#include "tests/toolkit/FakeDiagnostics.h"
#include "toolkit/TmyBitmap24.h"
#include "toolkit/TmyBitmap32.h"
#include "toolkit/TmyBitmapDD.h"

#include <array>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

using Lines = std::vector<std::string>;
using test::FakeDiagnostics;

constexpr COLORREF kRed = RGB(255, 0, 0);
constexpr COLORREF kGreen = RGB(0, 255, 0);
constexpr COLORREF kBlue = RGB(0, 0, 255);
constexpr COLORREF kWhite = RGB(255, 255, 255);
constexpr COLORREF kBlack = RGB(0, 0, 0);

void Fill(TmyBitmapBase& bitmap, COLORREF colour) {
    const RECT all{0, 0, bitmap.Width(), bitmap.Height()};
    HBRUSH brush = CreateSolidBrush(colour);
    FillRect(bitmap.GetDC(), &all, brush);
    DeleteObject(brush);
}

COLORREF PixelOf(TmyBitmapBase& bitmap, int x, int y) {
    return ::GetPixel(bitmap.GetDC(), x, y);
}

/// Each pixel tells its place.
COLORREF PlaceColour(int x, int y) {
    return RGB(10 * x + 1, 10 * y + 2, 100 + x + y);
}

void PaintPlaces(TmyBitmapBase& bitmap) {
    for (int y = 0; y < bitmap.Height(); ++y) {
        for (int x = 0; x < bitmap.Width(); ++x) {
            SetPixelV(bitmap.GetDC(), x, y, PlaceColour(x, y));
        }
    }
}

/// The real table is back at the end.
class BitmapCallsGuard {
public:
    ~BitmapCallsGuard() { BitmapCalls() = before; }

private:
    BitmapPlatform before = BitmapCalls();
};

TEST(TmyBitmap24, RowsBeginAtMultiplesOfFour) {
    const struct {
        int width, rowBytes;
    } rows[] = {{1, 4}, {2, 8}, {3, 12}, {4, 12}, {5, 16}, {6, 20}, {7, 24}, {8, 24}, {100, 300}, {101, 304}};
    for (const auto& row : rows) {
        const TmyBitmap24 bitmap(row.width, 3);
        EXPECT_EQ(bitmap.RowBytes(), row.rowBytes) << row.width;
        EXPECT_EQ(bitmap.Width(), row.width);
        EXPECT_EQ(bitmap.Height(), 3);
        EXPECT_NE(bitmap.Handle(), nullptr);
    }
}

TEST(TmyBitmap24, HasARowForEachLineFromTheTop) {
    TmyBitmap24 bitmap(5, 4);
    PaintPlaces(bitmap);
    GdiFlush();
    for (int y = 0; y < 4; ++y) {
        const std::uint8_t* row = bitmap.GetRow(y);
        ASSERT_NE(row, nullptr);
        EXPECT_EQ(row, bitmap.GetRow(3) + (3 - y) * 16) << "the lowest line lies first";
        for (int x = 0; x < 5; ++x) {
            const std::uint8_t* pixel = row + 3 * x;
            EXPECT_EQ(RGB(pixel[2], pixel[1], pixel[0]), PlaceColour(x, y)) << x << ", " << y;
        }
    }
    EXPECT_EQ(bitmap.GetRow(4), nullptr);
    EXPECT_EQ(bitmap.GetRow(-1), nullptr);
    EXPECT_EQ(bitmap.GetRow(INT_MAX), nullptr);
}

TEST(TmyBitmap24, BytesWrittenAreSeenByTheDrawing) {
    TmyBitmap24 bitmap(2, 2);
    std::uint8_t* pixel = bitmap.GetRow(1) + 3;
    pixel[0] = 0x10;
    pixel[1] = 0x20;
    pixel[2] = 0x30;
    EXPECT_EQ(PixelOf(bitmap, 1, 1), RGB(0x30, 0x20, 0x10));
    EXPECT_EQ(PixelOf(bitmap, 0, 0), kBlack) << "new ones are black";
}

TEST(TmyBitmap24, ItsDeviceContextIsMadeOnce) {
    TmyBitmap24 bitmap(4, 4);
    HDC dc = bitmap.GetDC();
    ASSERT_NE(dc, nullptr);
    EXPECT_EQ(bitmap.GetDC(), dc);
    EXPECT_EQ(GetCurrentObject(dc, OBJ_BITMAP), bitmap.Handle());
}

TEST(TmyBitmap24, GivesBackWhatItTook) {
    HBITMAP handle = nullptr;
    HDC dc = nullptr;
    {
        TmyBitmap24 bitmap(4, 4);
        handle = bitmap.Handle();
        dc = bitmap.GetDC();
    }
    EXPECT_EQ(GetObjectType(handle), 0U);
    EXPECT_EQ(GetObjectType(dc), 0U);
}

TEST(TmyBitmap24, ThousandsComeAndGo) {
    // There are at most 65536 handles for a whole session, and by default 10000 for a process.
    for (int i = 0; i < 70000; ++i) {
        TmyBitmap24 bitmap(1, 1);
        ASSERT_NE(bitmap.Handle(), nullptr) << i;
        if (i % 4 == 0) {
            ASSERT_NE(bitmap.GetDC(), nullptr) << i;
        }
    }
}

TEST(TmyBitmap24, ImpossibleSizesAreTracedAndHarmless) {
    for (const auto& [width, height] : {std::pair{0, 10},
                                        {10, 0},
                                        {0, 0},
                                        {-1, 10},
                                        {10, -10},
                                        {INT_MAX, 1},
                                        {1, INT_MAX},
                                        {INT_MAX, INT_MAX},
                                        {INT_MIN, INT_MIN},
                                        {65536, 65536}}) {
        const FakeDiagnostics platform;
        TmyBitmap24 bitmap(width, height);
        EXPECT_EQ(platform.Texts(), Lines{"Bitmap not created, err=87"}) << width << " by " << height;
        EXPECT_EQ(bitmap.Handle(), nullptr);
        EXPECT_EQ(bitmap.GetDC(), nullptr);
        EXPECT_EQ(bitmap.GetRow(0), nullptr);
        EXPECT_EQ(bitmap.Width(), 0);
        TmyBitmap24 other(4, 4);
        Fill(other, kRed);
        const RECT all{0, 0, 4, 4};
        EXPECT_FALSE(bitmap.Draw(other.GetDC(), 0, 0));
        EXPECT_FALSE(bitmap.StretchDraw(other.GetDC(), all));
        EXPECT_FALSE(bitmap.DrawTransparent(other.GetDC(), 0, 0, kBlack));
        EXPECT_FALSE(bitmap.DrawBlended(other.GetDC(), 255, all));
        bitmap.MakeTinted(other, kBlue, false);
        other.MakeTinted(bitmap, kBlue, false);
        EXPECT_EQ(PixelOf(other, 0, 0), kRed);
    }
}

TEST(TmyBitmap24, FailuresOfThePlatformAreTraced) {
    const BitmapCallsGuard guard;
    const FakeDiagnostics platform;
    BitmapCalls().createDibSection = [](const BITMAPINFO&, void**) -> HBITMAP {
        SetLastError(1234);
        return nullptr;
    };
    EXPECT_EQ(TmyBitmap24(4, 4).Handle(), nullptr);
    BitmapCalls().createDibSection = [](const BITMAPINFO&, void**) {
        HBITMAP bitmap = CreateBitmap(4, 4, 1, 1, nullptr);
        SetLastError(4321);
        return bitmap;
    };
    EXPECT_EQ(TmyBitmap24(4, 4).Handle(), nullptr);
    EXPECT_EQ(platform.Texts(), (Lines{"Bitmap not created, err=1234", "Pixels not created, err=4321"}));
}

TEST(TmyBitmap24, AsksForTheRightSection) {
    const BitmapCallsGuard guard;
    static BITMAPINFOHEADER asked;
    BitmapCalls().createDibSection = [](const BITMAPINFO& info, void**) -> HBITMAP {
        asked = info.bmiHeader;
        return nullptr;
    };
    const FakeDiagnostics platform;
    const TmyBitmap24 bitmap(7, 5);
    EXPECT_EQ(asked.biWidth, 7);
    EXPECT_EQ(asked.biHeight, 5);
    EXPECT_EQ(asked.biPlanes, 1);
    EXPECT_EQ(asked.biBitCount, 24);
    EXPECT_EQ(asked.biCompression, static_cast<DWORD>(BI_RGB));
    EXPECT_THROW(TmyBitmap32(7, 5), std::runtime_error);
    EXPECT_EQ(asked.biBitCount, 32);
}

/// A white canvas to draw to, and a picture whose pixels tell their places.
class BitmapDrawing : public testing::Test {
protected:
    BitmapDrawing() {
        Fill(canvas, kWhite);
        PaintPlaces(picture);
    }

    void ExpectPicture(int left, int top, int sourceLeft, int sourceTop, int width, int height) {
        for (int y = 0; y < canvas.Height(); ++y) {
            for (int x = 0; x < canvas.Width(); ++x) {
                const bool inside = x >= left && x < left + width && y >= top && y < top + height;
                EXPECT_EQ(PixelOf(canvas, x, y),
                          inside ? PlaceColour(x - left + sourceLeft, y - top + sourceTop) : kWhite)
                    << x << ", " << y;
            }
        }
    }

    TmyBitmap24 canvas{12, 10};
    TmyBitmap24 picture{5, 4};
};

TEST_F(BitmapDrawing, DrawCopiesAllWithoutARectangle) {
    EXPECT_TRUE(picture.Draw(canvas.GetDC(), 3, 2));
    ExpectPicture(3, 2, 0, 0, 5, 4);
}

TEST_F(BitmapDrawing, DrawCopiesAPart) {
    const RECT part{1, 2, 4, 4};
    EXPECT_TRUE(picture.Draw(canvas.GetDC(), 7, 1, &part));
    ExpectPicture(7, 1, 1, 2, 3, 2);
}

TEST_F(BitmapDrawing, DrawTakesARasterOperation) {
    EXPECT_TRUE(picture.Draw(canvas.GetDC(), 0, 0, nullptr, SRCINVERT));
    EXPECT_EQ(PixelOf(canvas, 2, 1), kWhite ^ PlaceColour(2, 1));
    EXPECT_TRUE(picture.Draw(canvas.GetDC(), 0, 0, nullptr, BLACKNESS));
    EXPECT_EQ(PixelOf(canvas, 2, 1), kBlack);
}

TEST_F(BitmapDrawing, DrawFailsWithoutATarget) {
    EXPECT_FALSE(picture.Draw(nullptr, 0, 0));
}

TEST_F(BitmapDrawing, StretchDrawFillsTheRectangle) {
    const RECT target{1, 1, 11, 9};
    EXPECT_TRUE(picture.StretchDraw(canvas.GetDC(), target));
    for (int y = 0; y < 10; ++y) {
        for (int x = 0; x < 12; ++x) {
            const bool inside = x >= 1 && x < 11 && y >= 1 && y < 9;
            EXPECT_EQ(PixelOf(canvas, x, y), inside ? PlaceColour((x - 1) / 2, (y - 1) / 2) : kWhite)
                << x << ", " << y;
        }
    }
}

TEST_F(BitmapDrawing, StretchDrawTakesAPartAndARasterOperation) {
    const RECT target{0, 0, 4, 4};
    const RECT part{3, 1, 5, 3};
    EXPECT_TRUE(picture.StretchDraw(canvas.GetDC(), target, &part, SRCINVERT));
    EXPECT_EQ(PixelOf(canvas, 0, 0), kWhite ^ PlaceColour(3, 1));
    EXPECT_EQ(PixelOf(canvas, 3, 3), kWhite ^ PlaceColour(4, 2));
    EXPECT_EQ(PixelOf(canvas, 4, 4), kWhite);
}

TEST_F(BitmapDrawing, TransparentPixelsAreLeftOut) {
    SetPixelV(picture.GetDC(), 1, 1, kGreen);
    SetPixelV(picture.GetDC(), 4, 3, kGreen);
    EXPECT_TRUE(picture.DrawTransparent(canvas.GetDC(), 2, 3, kGreen));
    EXPECT_EQ(PixelOf(canvas, 3, 4), kWhite);
    EXPECT_EQ(PixelOf(canvas, 6, 6), kWhite);
    EXPECT_EQ(PixelOf(canvas, 2, 3), PlaceColour(0, 0));
    EXPECT_EQ(PixelOf(canvas, 5, 6), PlaceColour(3, 3));
    EXPECT_EQ(PixelOf(canvas, 7, 3), kWhite) << "in its natural size";
    EXPECT_EQ(PixelOf(canvas, 2, 7), kWhite);
}

TEST_F(BitmapDrawing, TransparentDrawingStretches) {
    SetPixelV(picture.GetDC(), 0, 0, kGreen);
    EXPECT_TRUE(picture.DrawTransparent(canvas.GetDC(), 0, 0, kGreen, 10, 8));
    EXPECT_EQ(PixelOf(canvas, 0, 0), kWhite);
    EXPECT_EQ(PixelOf(canvas, 1, 1), kWhite);
    EXPECT_EQ(PixelOf(canvas, 2, 0), PlaceColour(1, 0));
    EXPECT_EQ(PixelOf(canvas, 9, 7), PlaceColour(4, 3));
    EXPECT_EQ(PixelOf(canvas, 10, 8), kWhite);
}

TEST_F(BitmapDrawing, BlendingMixesByOneAlpha) {
    const RECT target{2, 2, 7, 6};
    const auto expectMix = [&](int x, int y, int alpha) {
        const COLORREF source = PlaceColour(x - 2, y - 2);
        const COLORREF mixed = PixelOf(canvas, x, y);
        const auto mix = [=](int channel) { return (channel * alpha + 255 * (255 - alpha)) / 255; };
        EXPECT_NEAR(GetRValue(mixed), mix(GetRValue(source)), 1) << alpha;
        EXPECT_NEAR(GetGValue(mixed), mix(GetGValue(source)), 1) << alpha;
        EXPECT_NEAR(GetBValue(mixed), mix(GetBValue(source)), 1) << alpha;
    };
    for (const int alpha : {0, 64, 128, 255}) {
        Fill(canvas, kWhite);
        EXPECT_TRUE(picture.DrawBlended(canvas.GetDC(), static_cast<std::uint8_t>(alpha), target));
        expectMix(2, 2, alpha);
        expectMix(6, 5, alpha);
        EXPECT_EQ(PixelOf(canvas, 7, 6), kWhite);
        EXPECT_EQ(PixelOf(canvas, 1, 2), kWhite);
    }
}

TEST_F(BitmapDrawing, BlendingTakesAPart) {
    const RECT target{0, 0, 2, 2};
    const RECT part{3, 2, 5, 4};
    EXPECT_TRUE(picture.DrawBlended(canvas.GetDC(), 255, target, &part));
    EXPECT_EQ(PixelOf(canvas, 0, 0), PlaceColour(3, 2));
    EXPECT_EQ(PixelOf(canvas, 1, 1), PlaceColour(4, 3));
    EXPECT_EQ(PixelOf(canvas, 2, 2), kWhite);
}

TEST(BitmapTinting, ShadesTheColourByTheBrightness) {
    constexpr COLORREF kColour = RGB(100, 50, 200);
    const struct {
        COLORREF pixel, tinted;
    } rows[] = {
        {RGB(128, 128, 128), RGB(100, 50, 200)}, // a sum of 384 is a brightness of 1
        {RGB(255, 129, 0), RGB(100, 50, 200)},   // whatever the hue
        {RGB(64, 64, 64), RGB(50, 25, 100)},     // 192: a half
        {RGB(255, 255, 255), RGB(199, 99, 255)}, // 765: 1.9921875, and blue is full
        {RGB(192, 192, 192), RGB(150, 75, 255)}, // 576: one and a half
        {RGB(1, 0, 0), RGB(1, 1, 1)},            // comes to 0
        {RGB(0, 0, 0), RGB(1, 1, 1)},
        {RGB(2, 0, 0), RGB(0, 0, 1)}, // 341 of 65536: only blue is left
        {RGB(3, 1, 0), RGB(1, 0, 2)}, // 682
    };
    for (const auto& row : rows) {
        TmyBitmap24 source(2, 1);
        TmyBitmap24 target(2, 1);
        SetPixelV(source.GetDC(), 0, 0, kWhite);
        SetPixelV(source.GetDC(), 1, 0, row.pixel);
        target.MakeTinted(source, kColour, false);
        EXPECT_EQ(PixelOf(target, 1, 0), row.tinted) << std::hex << row.pixel;
        EXPECT_EQ(PixelOf(target, 0, 0), RGB(199, 99, 255)) << "the first pixel is like the others";
        EXPECT_EQ(PixelOf(source, 1, 0), row.pixel) << "the source stays";
    }
}

TEST(BitmapTinting, TheFirstColourBecomesPureBlack) {
    TmyBitmap24 source(3, 2);
    TmyBitmap32 target(3, 2);
    Fill(source, kGreen);
    SetPixelV(source.GetDC(), 1, 0, RGB(128, 128, 128));
    SetPixelV(source.GetDC(), 2, 0, kBlack);
    SetPixelV(source.GetDC(), 1, 1, kGreen - 0x100);
    target.MakeTinted(source, RGB(10, 20, 30), true);
    EXPECT_EQ(PixelOf(target, 0, 0), 0U);
    EXPECT_EQ(PixelOf(target, 1, 0), RGB(10, 20, 30));
    EXPECT_EQ(PixelOf(target, 2, 0), 0x010101U) << "black, but not the first colour";
    EXPECT_EQ(PixelOf(target, 0, 1), 0U);
    EXPECT_NE(PixelOf(target, 1, 1), 0U) << "nearly the first colour";
    EXPECT_EQ(PixelOf(target, 2, 1), 0U);
}

TEST(BitmapTinting, CoversWhatBothHave) {
    TmyBitmap24 source(2, 3);
    TmyBitmap24 target(3, 2);
    Fill(source, RGB(128, 128, 128));
    Fill(target, kWhite);
    target.MakeTinted(source, kBlue, false);
    EXPECT_EQ(PixelOf(target, 1, 1), kBlue);
    EXPECT_EQ(PixelOf(target, 2, 1), kWhite);
    EXPECT_EQ(PixelOf(source, 0, 2), RGB(128, 128, 128));
}

TEST(TmyBitmap32, HasFourBytesForAPixel) {
    TmyBitmap32 bitmap(5, 3);
    EXPECT_EQ(bitmap.RowBytes(), 20);
    EXPECT_EQ(bitmap.GetRow(3), nullptr);
    ASSERT_NE(bitmap.GetRow(0), nullptr);
    EXPECT_EQ(bitmap.GetRow(0), bitmap.GetRow(2) + 40);
}

TEST(TmyBitmap32, GetPixelIsZeroOutside) {
    TmyBitmap32 bitmap(3, 2);
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 3; ++x) {
            const std::uint32_t pixel = 0xA0B0C000U + static_cast<std::uint32_t>(10 * y + x);
            std::memcpy(bitmap.GetRow(y) + 4 * x, &pixel, sizeof(pixel));
        }
    }
    EXPECT_EQ(bitmap.GetPixel(0, 0), 0xA0B0C000U);
    EXPECT_EQ(bitmap.GetPixel(2, 0), 0xA0B0C002U);
    EXPECT_EQ(bitmap.GetPixel(1, 1), 0xA0B0C00BU);
    for (const auto& [x, y] : {std::pair{-1, 0}, {0, -1}, {3, 0}, {0, 2}, {INT_MAX, 0}, {0, INT_MIN}}) {
        EXPECT_EQ(bitmap.GetPixel(x, y), 0U) << x << ", " << y;
    }
}

TEST(TmyBitmap32, BlendsByThePixelsOwnAlpha) {
    TmyBitmap24 canvas(4, 1);
    TmyBitmap32 picture(4, 1);
    Fill(canvas, kWhite);
    // Red of alpha 255, 128 and 0, multiplied already; and what is under a half alpha of the whole.
    const std::uint32_t pixels[] = {0xFFFF0000U, 0x80800000U, 0x00000000U, 0xFF000000U};
    std::memcpy(picture.GetRow(0), pixels, sizeof(pixels));
    const RECT target{0, 0, 4, 1};
    EXPECT_TRUE(picture.DrawBlended(canvas.GetDC(), 255, target));
    EXPECT_EQ(PixelOf(canvas, 0, 0), kRed);
    EXPECT_NEAR(GetRValue(PixelOf(canvas, 1, 0)), 255, 1);
    EXPECT_NEAR(GetGValue(PixelOf(canvas, 1, 0)), 127, 1);
    EXPECT_EQ(PixelOf(canvas, 2, 0), kWhite);
    EXPECT_EQ(PixelOf(canvas, 3, 0), kBlack);
    Fill(canvas, kWhite);
    EXPECT_TRUE(picture.DrawBlended(canvas.GetDC(), 128, target));
    EXPECT_NEAR(GetGValue(PixelOf(canvas, 0, 0)), 127, 1) << "both alphas count";
    EXPECT_NEAR(GetGValue(PixelOf(canvas, 1, 0)), 191, 2);
    EXPECT_EQ(PixelOf(canvas, 2, 0), kWhite);
}

TEST(TmyBitmap32, ImpossibleSizesThrowAndAreTraced) {
    for (const auto& [width, height] :
         {std::pair{0, 10}, {10, 0}, {-5, 5}, {5, -5}, {INT_MAX, INT_MAX}, {65536, 65536}}) {
        const FakeDiagnostics platform;
        try {
            const TmyBitmap32 bitmap(width, height);
            ADD_FAILURE() << width << " by " << height;
        } catch (const std::runtime_error& failure) {
            EXPECT_STREQ(failure.what(), "Bitmap32 constructor failed");
        }
        EXPECT_EQ(platform.Texts(), Lines{"Bitmap32 not created, err=87"});
    }
}

TEST(TmyBitmap32, FailuresOfThePlatformThrowAndAreTraced) {
    const BitmapCallsGuard guard;
    const FakeDiagnostics platform;
    BitmapCalls().createDibSection = [](const BITMAPINFO&, void**) -> HBITMAP {
        SetLastError(1234);
        return nullptr;
    };
    EXPECT_THROW(TmyBitmap32(4, 4), std::runtime_error);
    EXPECT_THROW(TmyBitmap32(GetModuleHandleA(nullptr), "OPAQUE_PICTURE"), std::runtime_error);
    static HBITMAP withoutPixels = nullptr;
    BitmapCalls().createDibSection = [](const BITMAPINFO&, void**) {
        withoutPixels = CreateBitmap(4, 4, 1, 1, nullptr);
        SetLastError(4321);
        return withoutPixels;
    };
    EXPECT_THROW(TmyBitmap32(4, 4), std::runtime_error);
    EXPECT_EQ(GetObjectType(withoutPixels), 0U);
    EXPECT_EQ(platform.Texts(), (Lines{"Bitmap32 not created, err=1234", "Bitmap32 not created, err=1234",
                                       "Pixels32 not created, err=4321"}));
}

TEST(TmyBitmap32, ComesFromAResource) {
    const struct {
        const char* resource;
        std::array<std::uint32_t, 6> alphas;
    } rows[] = {
        {"TRANSPARENT_PICTURE", {255, 128, 0, 64, 1, 254}},
        {"OPAQUE_PICTURE", {255, 255, 255, 255, 255, 255}},
        {MAKEINTRESOURCEA(7), {255, 255, 255, 255, 255, 255}},
    };
    for (const auto& row : rows) {
        TmyBitmap32 bitmap(GetModuleHandleA(nullptr), row.resource);
        ASSERT_EQ(bitmap.Width(), 3);
        ASSERT_EQ(bitmap.Height(), 2);
        for (std::uint32_t n = 0; n < 6; ++n) {
            const std::uint32_t colours = (3 * n + 1) | (3 * n + 2) << 8 | (3 * n + 3) << 16;
            EXPECT_EQ(bitmap.GetPixel(static_cast<int>(n % 3), static_cast<int>(n / 3)),
                      colours | row.alphas[n] << 24)
                << "pixel " << n << ", resource " << &row - rows;
        }
    }
}

TEST(TmyBitmap32, AMissingResourceThrowsAndIsTraced) {
    const FakeDiagnostics platform;
    EXPECT_THROW(TmyBitmap32(GetModuleHandleA(nullptr), "NO_SUCH_PICTURE"), std::runtime_error);
    ASSERT_EQ(platform.lines.size(), 1U);
    EXPECT_EQ(platform.Texts()[0].rfind("Bitmap32 not created, err=", 0), 0U) << platform.Texts()[0];
}

TEST(TmyBitmapDD, HasTheScreensFormatAndNoPixelsInReach) {
    TmyBitmapDD bitmap(7, 5);
    ASSERT_NE(bitmap.Handle(), nullptr);
    EXPECT_EQ(bitmap.Width(), 7);
    EXPECT_EQ(bitmap.Height(), 5);
    EXPECT_EQ(bitmap.RowBytes(), 7);
    EXPECT_EQ(bitmap.GetRow(0), nullptr);
    EXPECT_EQ(bitmap.GetRow(5), nullptr);
    BITMAP shape{};
    GetObjectA(bitmap.Handle(), sizeof(shape), &shape);
    HDC screen = GetDC(nullptr);
    EXPECT_EQ(shape.bmBitsPixel, GetDeviceCaps(screen, BITSPIXEL));
    ReleaseDC(nullptr, screen);
}

TEST(TmyBitmapDD, DrawsLikeTheOthers) {
    TmyBitmap24 canvas(4, 4);
    TmyBitmapDD picture(2, 2);
    Fill(canvas, kWhite);
    Fill(picture, kRed);
    EXPECT_TRUE(picture.Draw(canvas.GetDC(), 1, 1));
    EXPECT_EQ(PixelOf(canvas, 1, 1), kRed);
    EXPECT_EQ(PixelOf(canvas, 2, 2), kRed);
    EXPECT_EQ(PixelOf(canvas, 3, 3), kWhite);
}

TEST(TmyBitmapDD, FailuresAreTracedWithTheSize) {
    const BitmapCallsGuard guard;
    const FakeDiagnostics platform;
    EXPECT_EQ(TmyBitmapDD(0, 10).Handle(), nullptr);
    EXPECT_EQ(TmyBitmapDD(10, -1).Handle(), nullptr);
    BitmapCalls().createScreenBitmap = [](int, int) -> HBITMAP {
        SetLastError(1234);
        return nullptr;
    };
    TmyBitmapDD bitmap(20, 30);
    EXPECT_EQ(bitmap.Handle(), nullptr);
    EXPECT_EQ(bitmap.Width(), 0);
    EXPECT_EQ(platform.Texts(),
              (Lines{"BitmapDD [0x10] not created, err=87", "BitmapDD [10x-1] not created, err=87",
                     "BitmapDD [20x30] not created, err=1234"}));
}

TEST(BitmapFiles, WriteAllIsTrueWhenAllIsWritten) {
    char folder[MAX_PATH];
    char path[MAX_PATH];
    GetTempPathA(MAX_PATH, folder);
    GetTempFileNameA(folder, "orv", 0, path);
    HANDLE file = CreateFileA(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    TmyBitmap24 bitmap(1, 1);
    EXPECT_TRUE(bitmap.WriteAll(file, "picture", 7));
    EXPECT_TRUE(bitmap.WriteAll(file, "", 0));
    SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    char read[8] = {};
    DWORD count = 0;
    ReadFile(file, read, 8, &count, nullptr);
    EXPECT_EQ(std::string(read, count), "picture");
    CloseHandle(file);
    file = CreateFileA(path, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_FALSE(bitmap.WriteAll(file, "picture", 7)) << "only to be read";
    CloseHandle(file);
    DeleteFileA(path);
    EXPECT_FALSE(bitmap.WriteAll(INVALID_HANDLE_VALUE, "picture", 7));
}

TEST(BitmapObjects, TraceWhateverTheSwitch) {
    ASSERT_EQ(TraceLevel(), 0U);
    EXPECT_EQ(TmyBitmap24(1, 1).traceEnabled, 1U);
    EXPECT_EQ(TmyBitmap32(1, 1).traceEnabled, 1U);
    EXPECT_EQ(TmyBitmapDD(1, 1).traceEnabled, 1U);
}

TEST(BitmapObjects, AreDeletedThroughTheRoot) {
    auto bitmap = std::make_unique<TmyBitmap32>(2, 2);
    HBITMAP handle = bitmap->Handle();
    std::unique_ptr<TmyObject> object = std::move(bitmap);
    object.reset();
    EXPECT_EQ(GetObjectType(handle), 0U);
}

} // namespace
} // namespace orva::toolkit
