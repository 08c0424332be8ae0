#include "toolkit/TmyBitmapBase.h"

#include "toolkit/Trace.h"

#include <algorithm>
#include <limits>

#include <climits>

namespace orva::toolkit {
namespace {

/// Brightness is a number of 16 bits behind the point, and 1 at half of the full sum, 3 times 256.
constexpr std::uint32_t kBrightnessShift = 16;
constexpr std::uint32_t kHalfBrightness = 0x180;
constexpr std::uint32_t kMostOfAChannel = 255;
constexpr COLORREF kNearlyBlack = 0x010101;

HBITMAP MakeSection(const BITMAPINFO& info, void** bits) {
    return CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, bits, nullptr, 0);
}

HBITMAP MakeScreenBitmap(int width, int height) {
    HDC screen = ::GetDC(nullptr);
    HBITMAP made = CreateCompatibleBitmap(screen, width, height);
    const DWORD error = GetLastError();
    ReleaseDC(nullptr, screen);
    SetLastError(error);
    return made;
}

constinit BitmapPlatform platform{MakeSection, MakeScreenBitmap};

int WidthOf(const RECT& rect) {
    return rect.right - rect.left;
}

int HeightOf(const RECT& rect) {
    return rect.bottom - rect.top;
}

/// Bytes from line to line; lines begin at multiples of 4.
std::int64_t BytesPerRow(std::int64_t pixels, std::int64_t bitsPerPixel) {
    constexpr std::int64_t kUnit = 4;
    return (pixels * bitsPerPixel / CHAR_BIT + kUnit - 1) / kUnit * kUnit;
}

std::uint32_t Brightness(COLORREF colour) {
    const std::uint32_t sum = GetRValue(colour) + GetGValue(colour) + GetBValue(colour);
    return (sum << kBrightnessShift) / kHalfBrightness;
}

BYTE Shade(std::uint32_t channel, std::uint32_t brightness) {
    return static_cast<BYTE>(std::min(channel * brightness >> kBrightnessShift, kMostOfAChannel));
}

COLORREF Tint(COLORREF pixel, COLORREF colour) {
    const std::uint32_t brightness = Brightness(pixel);
    const COLORREF tinted = RGB(Shade(GetRValue(colour), brightness), Shade(GetGValue(colour), brightness),
                                Shade(GetBValue(colour), brightness));
    return tinted == 0 ? kNearlyBlack : tinted;
}

} // namespace

BitmapPlatform& BitmapCalls() {
    return platform;
}

TmyBitmapBase::TmyBitmapBase() {
    traceEnabled = 1;
}

TmyBitmapBase::~TmyBitmapBase() {
    if (memoryDC != nullptr) {
        SelectObject(memoryDC, savedBitmap);
        DeleteDC(memoryDC);
    }
    if (bitmap != nullptr) {
        DeleteObject(bitmap);
    }
}

bool TmyBitmapBase::CreateSection(int sectionWidth, int sectionHeight, std::uint16_t bitsPerPixel,
                                  const char* bitmapName, const char* pixelsName) {
    // A negative height would turn the picture over, and a huge one could wrap the platform's own sum.
    const std::int64_t bytesPerRow = BytesPerRow(sectionWidth, bitsPerPixel);
    void* pixels = nullptr;
    if (sectionWidth <= 0 || sectionHeight <= 0 ||
        bytesPerRow > std::numeric_limits<std::int32_t>::max() / sectionHeight) {
        SetLastError(ERROR_INVALID_PARAMETER);
    } else {
        BITMAPINFO info{};
        info.bmiHeader.biSize = sizeof(info.bmiHeader);
        info.bmiHeader.biWidth = sectionWidth;
        info.bmiHeader.biHeight = sectionHeight;
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = bitsPerPixel;
        bitmap = platform.createDibSection(info, &pixels);
    }

    if (bitmap == nullptr) {
        TraceFailure(bitmapName);
        return false;
    }
    if (pixels == nullptr) {
        TraceFailure(pixelsName);
        DeleteObject(bitmap);
        bitmap = nullptr;
        return false;
    }
    bits = static_cast<std::uint8_t*>(pixels);
    rowBytes = static_cast<std::int32_t>(bytesPerRow);
    width = sectionWidth;
    height = sectionHeight;
    return true;
}

void TmyBitmapBase::TraceFailure(const char* name) const {
    const auto error = static_cast<int>(GetLastError());
    Trace(this, 0, "%s not created, err=%d", name, error);
}

HDC TmyBitmapBase::GetDC() {
    if (memoryDC == nullptr && bitmap != nullptr) {
        memoryDC = CreateCompatibleDC(nullptr);
        if (memoryDC != nullptr) {
            savedBitmap = SelectObject(memoryDC, bitmap);
        }
    }
    return memoryDC;
}

bool TmyBitmapBase::WriteAll(HANDLE file, const void* buffer, std::uint32_t count) {
    DWORD written = 0;
    return WriteFile(file, buffer, count, &written, nullptr) != 0 && written == count;
}

bool TmyBitmapBase::Draw(HDC dc, int x, int y, const RECT* sourceRect, DWORD rop) {
    const RECT source = sourceRect != nullptr ? *sourceRect : Whole();
    return GetDC() != nullptr &&
           BitBlt(dc, x, y, WidthOf(source), HeightOf(source), memoryDC, source.left, source.top, rop) != 0;
}

bool TmyBitmapBase::StretchDraw(HDC dc, const RECT& destRect, const RECT* sourceRect, DWORD rop) {
    const RECT source = sourceRect != nullptr ? *sourceRect : Whole();
    return GetDC() != nullptr &&
           StretchBlt(dc, destRect.left, destRect.top, WidthOf(destRect), HeightOf(destRect), memoryDC,
                      source.left, source.top, WidthOf(source), HeightOf(source), rop) != 0;
}

bool TmyBitmapBase::DrawTransparent(HDC dc, int x, int y, COLORREF colour, int w, int h) {
    if (w == 0 && h == 0) {
        w = width;
        h = height;
    }
    return GetDC() != nullptr && TransparentBlt(dc, x, y, w, h, memoryDC, 0, 0, width, height, colour) != 0;
}

void TmyBitmapBase::MakeTinted(TmyBitmapBase& source, COLORREF colour, bool transparentFirst) {
    HDC from = source.GetDC();
    HDC to = GetDC();
    if (from == nullptr || to == nullptr) {
        return;
    }
    const COLORREF first = ::GetPixel(from, 0, 0);
    for (int y = 0; y < std::min(height, source.height); ++y) {
        for (int x = 0; x < std::min(width, source.width); ++x) {
            const COLORREF pixel = ::GetPixel(from, x, y);
            SetPixelV(to, x, y, transparentFirst && pixel == first ? 0 : Tint(pixel, colour));
        }
    }
}

bool TmyBitmapBase::DrawBlended(HDC dc, std::uint8_t alpha, const RECT& destRect, const RECT* sourceRect) {
    return Blend(dc, destRect, sourceRect, {AC_SRC_OVER, 0, alpha, 0});
}

bool TmyBitmapBase::Blend(HDC dc, const RECT& destRect, const RECT* sourceRect, const BLENDFUNCTION& blend) {
    const RECT source = sourceRect != nullptr ? *sourceRect : Whole();
    return GetDC() != nullptr &&
           AlphaBlend(dc, destRect.left, destRect.top, WidthOf(destRect), HeightOf(destRect), memoryDC,
                      source.left, source.top, WidthOf(source), HeightOf(source), blend) != 0;
}

std::uint8_t* TmyBitmapBase::GetRow(int y) {
    if (bits == nullptr || y < 0 || y >= height) {
        return nullptr;
    }
    return bits + static_cast<std::ptrdiff_t>(height - y - 1) * rowBytes;
}

} // namespace orva::toolkit
