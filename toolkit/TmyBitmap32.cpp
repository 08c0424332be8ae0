#include "toolkit/TmyBitmap32.h"

#include "toolkit/Trace.h"

#include <cstring>
#include <stdexcept>

namespace orva::toolkit {
namespace {

constexpr std::uint16_t kBitsPerPixel = 32;
constexpr std::size_t kBytesPerPixel = 4;
constexpr std::size_t kAlpha = 3; ///< its place in a pixel
constexpr std::uint8_t kOpaque = 0xFF;

[[noreturn]] void Fail() {
    throw std::runtime_error("Bitmap32 constructor failed");
}

} // namespace

TmyBitmap32::TmyBitmap32(int bitmapWidth, int bitmapHeight) {
    Create(bitmapWidth, bitmapHeight);
}

TmyBitmap32::TmyBitmap32(HINSTANCE module, const char* resource) {
    auto* loaded =
        static_cast<HBITMAP>(LoadImageA(module, resource, IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION));
    if (loaded == nullptr) {
        Trace(this, 0, "Bitmap32 not created, err=%d", static_cast<int>(GetLastError()));
        Fail();
    }
    try {
        CopyFrom(loaded);
    } catch (...) {
        DeleteObject(loaded);
        throw;
    }
    DeleteObject(loaded);
}

void TmyBitmap32::Create(int bitmapWidth, int bitmapHeight) {
    if (!CreateSection(bitmapWidth, bitmapHeight, kBitsPerPixel, "Bitmap32", "Pixels32")) {
        Fail();
    }
}

void TmyBitmap32::CopyFrom(HBITMAP other) {
    BITMAP shape{};
    GetObjectA(other, sizeof(shape), &shape);
    Create(shape.bmWidth, shape.bmHeight);

    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = kBitsPerPixel;
    HDC dc = CreateCompatibleDC(nullptr);
    const int lines = GetDIBits(dc, other, 0, static_cast<UINT>(height), bits, &info, DIB_RGB_COLORS);
    const auto error = static_cast<int>(GetLastError());
    DeleteDC(dc);
    if (lines != height) {
        Trace(this, 0, "Pixels32 not created, err=%d", error);
        Fail();
    }
    if (shape.bmBitsPixel < kBitsPerPixel) {
        MakeOpaque();
    }
}

void TmyBitmap32::MakeOpaque() {
    const std::size_t bytes = static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(height);
    for (std::size_t i = kAlpha; i < bytes; i += kBytesPerPixel) {
        bits[i] = kOpaque;
    }
}

bool TmyBitmap32::DrawBlended(HDC dc, std::uint8_t alpha, const RECT& destRect, const RECT* sourceRect) {
    return Blend(dc, destRect, sourceRect, {AC_SRC_OVER, 0, alpha, AC_SRC_ALPHA});
}

std::uint32_t TmyBitmap32::GetPixel(int x, int y) {
    const std::uint8_t* row = GetRow(y);
    if (row == nullptr || x < 0 || x >= width) {
        return 0;
    }
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, row + static_cast<std::size_t>(x) * kBytesPerPixel, sizeof(pixel));
    return pixel;
}

} // namespace orva::toolkit
