/// Off-screen bitmaps.
#pragma once

#include "toolkit/TmyObject.h"

#include <cstdint>
#include <windows.h>

namespace orva::toolkit {

/// The calls that make bitmaps. The default is the platform's own; tests put theirs there.
struct BitmapPlatform {
    HBITMAP (*createDibSection)(const BITMAPINFO& info, void** bits);
    HBITMAP (*createScreenBitmap)(int width, int height); ///< in the screen's format
};

/// The table in force. [window thread]
BitmapPlatform& BitmapCalls();

/// A picture that can be drawn to and drawn from. How its pixels are kept is the derived class's.
///
/// A bitmap that could not be made has no size, draws nothing, and has no rows. It traces always, whatever
/// the trace switch. The drawing operations return false when the platform's call fails.
class TmyBitmapBase : public TmyObject {
public:
    ~TmyBitmapBase() override;
    TmyBitmapBase(const TmyBitmapBase&) = delete;
    TmyBitmapBase& operator=(const TmyBitmapBase&) = delete;

    /// True when all `count` bytes are written.
    virtual bool WriteAll(HANDLE file, const void* buffer, std::uint32_t count);

    /// Copies the part `sourceRect`, or with null all, to x, y of `dc` by a ternary raster operation.
    virtual bool Draw(HDC dc, int x, int y, const RECT* sourceRect = nullptr, DWORD rop = SRCCOPY);

    /// Copies the part `sourceRect`, or with null all, stretched to `destRect`; the mode is that of `dc`.
    virtual bool StretchDraw(HDC dc, const RECT& destRect, const RECT* sourceRect = nullptr,
                             DWORD rop = SRCCOPY);

    /// Copies all but the pixels of one colour, stretched to w times h; both 0: in the natural size.
    virtual bool DrawTransparent(HDC dc, int x, int y, COLORREF colour, int w = 0, int h = 0);

    /// Paints `source` in shades of one colour: a pixel of half the full brightness becomes the colour
    /// itself, darker ones darker, brighter ones up to twice as bright, each channel up to 255. What becomes
    /// black is 0x010101, so that only pixels of the top left pixel's colour, with `transparentFirst`, are 0.
    /// Covers what both bitmaps have.
    virtual void MakeTinted(TmyBitmapBase& source, COLORREF colour, bool transparentFirst);

    /// Mixes the part `sourceRect`, or with null all, stretched to `destRect`, into `dc`.
    /// alpha  0 leaves `dc` as it is, 255 covers it
    virtual bool DrawBlended(HDC dc, std::uint8_t alpha, const RECT& destRect,
                             const RECT* sourceRect = nullptr);

    /// First byte of a line, counted from the top; null outside the bitmap, and if the pixels are out of
    /// reach.
    virtual std::uint8_t* GetRow(int y);

    /// A device context with the bitmap selected, made at the first call and the bitmap's own; null without a
    /// bitmap.
    HDC GetDC();

    HBITMAP Handle() const { return bitmap; }
    std::int32_t RowBytes() const { return rowBytes; } ///< from line to line
    std::int32_t Width() const { return width; }       ///< [pixels]
    std::int32_t Height() const { return height; }     ///< [pixels]

protected:
    /// Pixels that the derived class must make.
    TmyBitmapBase();

    /// Makes a bottom-up section. False if it fails, which it also traces by the one or the other name; then
    /// there is no bitmap.
    bool CreateSection(int sectionWidth, int sectionHeight, std::uint16_t bitsPerPixel,
                       const char* bitmapName, const char* pixelsName);

    bool Blend(HDC dc, const RECT& destRect, const RECT* sourceRect, const BLENDFUNCTION& blend);

    HBITMAP bitmap = nullptr;
    HDC memoryDC = nullptr;
    HGDIOBJ savedBitmap = nullptr; ///< what `memoryDC` was made with
    std::uint8_t* bits = nullptr;  ///< pixels, the lowest line first
    std::int32_t rowBytes = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;

private:
    void TraceFailure(const char* name) const;
    RECT Whole() const { return {0, 0, width, height}; }
};

} // namespace orva::toolkit
