// rasterize_svg IN.svg OUT.png SIZE: draws an SVG into a SIZE by SIZE picture, its view box
// filling the square, and writes it as PNG. The build makes the bitmap forms of the icons and
// cursors with it, so that each picture has one source.

#include <cairo.h>
#include <librsvg/rsvg.h>

#include <cstdio>
#include <cstdlib>
#include <string>

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: rasterize_svg IN.svg OUT.png SIZE\n");
        return 2;
    }
    const int size = std::atoi(argv[3]);
    if (size < 1 || size > 4096) {
        std::fprintf(stderr, "rasterize_svg: '%s' is not a size from 1 to 4096\n", argv[3]);
        return 2;
    }
    GError* error = nullptr;
    RsvgHandle* handle = rsvg_handle_new_from_file(argv[1], &error);
    if (!handle) {
        std::fprintf(stderr, "rasterize_svg: %s: %s\n", argv[1],
                     error ? error->message : "cannot read");
        if (error)
            g_error_free(error);
        return 1;
    }
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, size, size);
    cairo_t* cr = cairo_create(surface);
    const RsvgRectangle viewport{0.0, 0.0, double(size), double(size)};
    const bool drawn = rsvg_handle_render_document(handle, cr, &viewport, &error);
    cairo_destroy(cr);
    int status = 0;
    if (!drawn) {
        std::fprintf(stderr, "rasterize_svg: %s: %s\n", argv[1],
                     error ? error->message : "cannot draw");
        status = 1;
    } else if (cairo_surface_write_to_png(surface, argv[2]) != CAIRO_STATUS_SUCCESS) {
        std::fprintf(stderr, "rasterize_svg: cannot write %s\n", argv[2]);
        status = 1;
    }
    if (error)
        g_error_free(error);
    cairo_surface_destroy(surface);
    g_object_unref(handle);
    return status;
}
