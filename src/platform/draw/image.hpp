#pragma once

#include "platform/core/color_rgba.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/core/point.hpp"
#include "platform/core/ref_counted_object.hpp"

#include <cstdint>
#include <span>
#include <string>

typedef struct _cairo_surface cairo_surface_t;

namespace qorui::penrig {

/// A bitmap in premultiplied ARGB32 with a pixel density: an image of scale 2 has twice as many
/// pixels per side as its logical size, which is how "@2x" artwork and 2x windows are kept. The
/// loaders throw std::runtime_error with the reason when data can't be read.
class Image : public qorcore::RefCountedObject {
public:
    /// A transparent image of the given logical size; pixels = ceil(size * scale).
    static qorcore::IntrusivePtr<Image> Create(float logicalWidth, float logicalHeight,
                                               float scale = 1.0f);
    static qorcore::IntrusivePtr<Image> LoadPNG(std::span<const std::uint8_t> data,
                                                float scale = 1.0f);
    static qorcore::IntrusivePtr<Image> LoadPNGFile(const std::string& path, float scale = 1.0f);
    /// Renders SVG data at its own size (its width and height, or else its view box) divided by
    /// `artworkScale` (2 for "_AT_2X" artwork, drawn at twice its logical size), times `scale`.
    static qorcore::IntrusivePtr<Image> LoadSVG(std::span<const std::uint8_t> data,
                                                float scale = 1.0f, float artworkScale = 1.0f);

    int GetPixelWidth() const;
    int GetPixelHeight() const;
    float GetScale() const { return scale_; }
    float GetWidth() const { return GetPixelWidth() / scale_; }
    float GetHeight() const { return GetPixelHeight() / scale_; }

    /// The colour of a device pixel, un-premultiplied; transparent outside the image.
    qorcore::ColorRGBA GetPixel(int x, int y) const;
    /// The raw 0xAARRGGBB premultiplied value of a device pixel; 0 outside.
    std::uint32_t GetRawPixel(int x, int y) const;
    void Fill(const qorcore::ColorRGBA& color);

    void WritePNG(const std::string& path) const;

    /// For backends and the penrig only; widget code draws through a `Penrig`.
    cairo_surface_t* GetNativeSurface() const { return surface_; }

private:
    Image(cairo_surface_t* surface, float scale);
    ~Image() override;

    cairo_surface_t* surface_;
    float scale_;
};

} // namespace qorui::penrig
