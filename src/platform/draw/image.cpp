#include "platform/draw/image.hpp"

#include <cairo.h>
#include <librsvg/rsvg.h>

#include <cmath>
#include <cstring>
#include <stdexcept>

namespace qorui::penrig {

namespace {

constexpr int kMaxSide = 16384;

float CheckScale(float scale) {
    if (!(scale > 0.0f && scale <= 8.0f))
        throw std::runtime_error("Image: scale must be above 0 and at most 8");
    return scale;
}

struct ReadCursor {
    std::span<const std::uint8_t> data;
    std::size_t offset = 0;
};

cairo_status_t ReadFromSpan(void* closure, unsigned char* out, unsigned int length) {
    auto* cursor = static_cast<ReadCursor*>(closure);
    if (cursor->data.size() - cursor->offset < length)
        return CAIRO_STATUS_READ_ERROR;
    std::memcpy(out, cursor->data.data() + cursor->offset, length);
    cursor->offset += length;
    return CAIRO_STATUS_SUCCESS;
}

// Takes ownership of a surface, making sure it is a valid ARGB32 image surface.
cairo_surface_t* Adopt(cairo_surface_t* surface, const char* what) {
    const cairo_status_t status = cairo_surface_status(surface);
    if (status != CAIRO_STATUS_SUCCESS) {
        cairo_surface_destroy(surface);
        throw std::runtime_error(std::string(what) + ": " + cairo_status_to_string(status));
    }
    if (cairo_image_surface_get_format(surface) == CAIRO_FORMAT_ARGB32)
        return surface;
    // PNGs without alpha load as RGB24; keep one pixel format everywhere.
    const int w = cairo_image_surface_get_width(surface);
    const int h = cairo_image_surface_get_height(surface);
    cairo_surface_t* argb = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, w, h);
    cairo_t* cr = cairo_create(argb);
    cairo_set_source_surface(cr, surface, 0, 0);
    cairo_paint(cr);
    cairo_destroy(cr);
    cairo_surface_destroy(surface);
    return argb;
}

} // namespace

Image::Image(cairo_surface_t* surface, float scale) : surface_(surface), scale_(scale) {}

Image::~Image() {
    cairo_surface_destroy(surface_);
}

qorcore::IntrusivePtr<Image> Image::Create(float logicalWidth, float logicalHeight, float scale) {
    CheckScale(scale);
    const double w = std::ceil(double(logicalWidth) * scale);
    const double h = std::ceil(double(logicalHeight) * scale);
    if (!(w >= 0 && h >= 0 && w <= kMaxSide && h <= kMaxSide))
        throw std::runtime_error("Image: size out of range");
    cairo_surface_t* surface =
        cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(w), static_cast<int>(h));
    return qorcore::IntrusivePtr<Image>(new Image(Adopt(surface, "Image"), scale));
}

qorcore::IntrusivePtr<Image> Image::LoadPNG(std::span<const std::uint8_t> data, float scale) {
    CheckScale(scale);
    ReadCursor cursor{data};
    cairo_surface_t* surface = cairo_image_surface_create_from_png_stream(ReadFromSpan, &cursor);
    return qorcore::IntrusivePtr<Image>(new Image(Adopt(surface, "PNG"), scale));
}

qorcore::IntrusivePtr<Image> Image::LoadPNGFile(const std::string& path, float scale) {
    CheckScale(scale);
    cairo_surface_t* surface = cairo_image_surface_create_from_png(path.c_str());
    return qorcore::IntrusivePtr<Image>(new Image(Adopt(surface, ("PNG " + path).c_str()), scale));
}

qorcore::IntrusivePtr<Image> Image::LoadSVG(std::span<const std::uint8_t> data, float scale,
                                            float artworkScale) {
    CheckScale(scale);
    CheckScale(artworkScale);
    GError* error = nullptr;
    RsvgHandle* handle = rsvg_handle_new_from_data(data.data(), data.size(), &error);
    if (!handle) {
        std::string reason = error ? error->message : "unreadable data";
        if (error)
            g_error_free(error);
        throw std::runtime_error("SVG: " + reason);
    }
    gdouble width = 0, height = 0;
    if (!rsvg_handle_get_intrinsic_size_in_pixels(handle, &width, &height)) {
        // No absolute width and height: the view box gives the size.
        gboolean hasWidth = FALSE, hasHeight = FALSE, hasViewBox = FALSE;
        RsvgLength w{}, h{};
        RsvgRectangle viewBox{};
        rsvg_handle_get_intrinsic_dimensions(handle, &hasWidth, &w, &hasHeight, &h, &hasViewBox,
                                             &viewBox);
        if (hasViewBox) {
            width = viewBox.width;
            height = viewBox.height;
        }
    }
    const double pixels = scale / artworkScale; // device pixels per unit of the drawing
    if (!(width > 0 && height > 0 && width * pixels <= kMaxSide && height * pixels <= kMaxSide)) {
        g_object_unref(handle);
        throw std::runtime_error("SVG: no usable size");
    }
    auto image = Create(static_cast<float>(width / artworkScale),
                        static_cast<float>(height / artworkScale), scale);
    cairo_t* cr = cairo_create(image->surface_);
    cairo_scale(cr, pixels, pixels);
    const RsvgRectangle viewport{0, 0, width, height};
    const gboolean ok = rsvg_handle_render_document(handle, cr, &viewport, &error);
    cairo_destroy(cr);
    g_object_unref(handle);
    if (!ok) {
        std::string reason = error ? error->message : "cannot render";
        if (error)
            g_error_free(error);
        throw std::runtime_error("SVG: " + reason);
    }
    cairo_surface_mark_dirty(image->surface_);
    return image;
}

int Image::GetPixelWidth() const {
    return cairo_image_surface_get_width(surface_);
}
int Image::GetPixelHeight() const {
    return cairo_image_surface_get_height(surface_);
}

std::uint32_t Image::GetRawPixel(int x, int y) const {
    if (x < 0 || y < 0 || x >= GetPixelWidth() || y >= GetPixelHeight())
        return 0;
    cairo_surface_flush(surface_);
    const unsigned char* row =
        cairo_image_surface_get_data(surface_) + y * cairo_image_surface_get_stride(surface_);
    std::uint32_t value;
    std::memcpy(&value, row + x * 4, 4);
    return value;
}

qorcore::ColorRGBA Image::GetPixel(int x, int y) const {
    const std::uint32_t v = GetRawPixel(x, y);
    const float a = float(v >> 24) / 255.0f;
    if (a == 0.0f)
        return {0, 0, 0, 0};
    auto channel = [&](int shift) {
        return float((v >> shift) & 0xFF) / 255.0f / a;
    };
    return {channel(16), channel(8), channel(0), a};
}

void Image::Fill(const qorcore::ColorRGBA& color) {
    cairo_t* cr = cairo_create(surface_);
    cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
    cairo_set_source_rgba(cr, color.red, color.green, color.blue, color.alpha);
    cairo_paint(cr);
    cairo_destroy(cr);
}

void Image::WritePNG(const std::string& path) const {
    const cairo_status_t status = cairo_surface_write_to_png(surface_, path.c_str());
    if (status != CAIRO_STATUS_SUCCESS)
        throw std::runtime_error("cannot write " + path + ": " + cairo_status_to_string(status));
}

} // namespace qorui::penrig
