#include "ui/status/X11InputShape.h"

#include "ui/status/X11Connection.h"

#include <vector>
#include <xcb/shape.h>

void x11SetInputShape(WId window, const QRegion& region) {
    xcb_connection_t* connection = x11Connection();
    if (!connection)
        return;
    std::vector<xcb_rectangle_t> rects;
    for (const QRect& r : region)
        rects.push_back(
            {int16_t(r.x()), int16_t(r.y()), uint16_t(r.width()), uint16_t(r.height())});
    xcb_shape_rectangles(connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT,
                         XCB_CLIP_ORDERING_UNSORTED, static_cast<xcb_window_t>(window), 0, 0,
                         uint32_t(rects.size()), rects.data());
    xcb_flush(connection);
}
