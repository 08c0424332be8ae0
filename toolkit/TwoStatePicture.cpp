#include "toolkit/TwoStatePicture.h"

#include "toolkit/Colors.h"

namespace orva::toolkit {

namespace {

/// Transparent pixels of the disabled copy.
constexpr COLORREF kClear = kBlack;

/// A device context of its own, as the screen's.
HDC MemoryContext() {
    return CreateCompatibleDC(nullptr);
}

HBITMAP ScreenBitmap(int width, int height) {
    const HDC screen = ::GetDC(nullptr);
    const HBITMAP made = CreateCompatibleBitmap(screen, width, height);
    ::ReleaseDC(nullptr, screen);
    return made;
}

} // namespace

std::unique_ptr<TwoStatePicture> TwoStatePicture::Load(HINSTANCE module, int resource,
                                                       COLORREF disabledColor) {
    const HBITMAP loaded = LoadBitmapA(module, MAKEINTRESOURCEA(resource));
    if (loaded == nullptr) {
        return nullptr;
    }
    const HDC context = MemoryContext();
    if (context == nullptr) {
        DeleteObject(loaded);
        return nullptr;
    }
    std::unique_ptr<TwoStatePicture> picture(new TwoStatePicture(loaded, context));
    return picture->MakeDisabledCopy(disabledColor) ? std::move(picture) : nullptr;
}

TwoStatePicture::TwoStatePicture(HBITMAP loaded, HDC context)
    : bitmap(loaded), memory(context), formerBitmap(SelectObject(context, loaded)) {
    BITMAP description{};
    GetObjectA(bitmap, sizeof description, &description);
    width = description.bmWidth;
    height = description.bmHeight;
    transparent = GetPixel(memory, 0, 0);
}

TwoStatePicture::~TwoStatePicture() {
    SelectObject(memory, formerBitmap);
    DeleteDC(memory);
    DeleteObject(bitmap);
    if (disabledBitmap != nullptr) {
        DeleteObject(disabledBitmap);
    }
}

void TwoStatePicture::SetDisabledColor(COLORREF color) {
    if (color != disabledColor) {
        static_cast<void>(MakeDisabledCopy(color)); // without memory the former one stays
    }
}

/// \return whether there is one in this colour now
bool TwoStatePicture::MakeDisabledCopy(COLORREF color) {
    const HBITMAP copy = ScreenBitmap(width, height);
    const HDC target = MemoryContext();
    if (copy == nullptr || target == nullptr) {
        DeleteObject(copy);
        DeleteDC(target);
        return false;
    }
    const HGDIOBJ before = SelectObject(target, copy);
    SelectObject(memory, bitmap);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            SetPixelV(target, x, y, GetPixel(memory, x, y) == transparent ? kClear : color);
        }
    }
    SelectObject(target, before);
    DeleteDC(target);
    if (disabledBitmap != nullptr) {
        DeleteObject(disabledBitmap);
    }
    disabledBitmap = copy;
    disabledColor = color;
    return true;
}

void TwoStatePicture::Draw(HDC dc, const RECT& area, bool enabled) {
    SelectObject(memory, enabled ? bitmap : disabledBitmap);
    TransparentBlt(dc, (area.left + area.right - width) / 2, (area.top + area.bottom - height) / 2, width,
                   height, memory, 0, 0, width, height, enabled ? transparent : kClear);
    SelectObject(memory, formerBitmap);
}

} // namespace orva::toolkit
