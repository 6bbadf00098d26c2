#include "x11/picture_window.h"

#include <cerrno>

#include <xcb/shape.h>

namespace td {

namespace {

/// The first kind of pixels that matches.
template <typename Matches> PixelKind find_pixels(Connection &connection, Matches matches) {
  for (auto depths = xcb_screen_allowed_depths_iterator(&connection.screen()); depths.rem;
       xcb_depth_next(&depths)) {
    for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem;
         xcb_visualtype_next(&visuals)) {
      const PixelKind found = {visuals.data, depths.data->depth};
      if (matches(found)) {
        return found;
      }
    }
  }
  return {nullptr, 0};
}

PixelKind find_visual(Connection &connection, xcb_visualid_t id) {
  return find_pixels(connection, [&](PixelKind pixels) { return pixels.visual->visual_id == id; });
}

bool has_compositor(Connection &connection) {
  const std::string selection = "_NET_WM_CM_S" + std::to_string(connection.screen_number());
  return connection.selection_owner(selection) != XCB_WINDOW_NONE;
}

} // namespace

PixelKind screen_pixels(Connection &connection) {
  return find_visual(connection, connection.screen().root_visual);
}

PixelKind pixels_of_visual(Connection &connection, xcb_visualid_t visual) {
  const PixelKind found = find_visual(connection, visual);
  return found.visual ? found : screen_pixels(connection);
}

PixelKind see_through_pixels(Connection &connection) {
  if (!has_compositor(connection)) {
    return screen_pixels(connection);
  }
  const PixelKind found = find_pixels(connection, [](PixelKind pixels) {
    return pixels.has_alpha() && pixels.visual->_class == XCB_VISUAL_CLASS_TRUE_COLOR;
  });
  return found.visual ? found : screen_pixels(connection);
}

PictureWindow::PictureWindow(Connection &connection, PixelKind pixels, ScreenRect place,
                             Managed managed, std::uint32_t events)
    : connection_(connection), pixels_(pixels), id_(xcb_generate_id(connection.raw())),
      colours_(xcb_generate_id(connection.raw())) {
  xcb_connection_t *raw = connection.raw();
  const xcb_visualid_t visual = pixels.visual->visual_id;
  xcb_create_colormap(raw, XCB_COLORMAP_ALLOC_NONE, colours_, connection.root(), visual);
  // A window of another depth than its parent's needs a border and a colour map of its own.
  const std::uint32_t values[] = {0, 0, managed == Managed::no, events, colours_};
  xcb_create_window(raw, pixels.depth, id_, connection.root(), static_cast<std::int16_t>(place.x),
                    static_cast<std::int16_t>(place.y), static_cast<std::uint16_t>(place.width),
                    static_cast<std::uint16_t>(place.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                    visual,
                    XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT |
                        XCB_CW_EVENT_MASK | XCB_CW_COLORMAP,
                    values);
  const std::string program = program_invocation_short_name;
  const std::string names = program + '\0' + program + '\0'; // instance and class
  xcb_change_property(raw, XCB_PROP_MODE_REPLACE, id_, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                      static_cast<std::uint32_t>(names.size()), names.data());
}

PictureWindow::~PictureWindow() {
  xcb_destroy_window(connection_.raw(), id_);
  xcb_free_colormap(connection_.raw(), colours_);
  connection_.flush();
}

void PictureWindow::set_title(const std::string &title) {
  xcb_change_property(connection_.raw(), XCB_PROP_MODE_REPLACE, id_, XCB_ATOM_WM_NAME,
                      XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(title.size()), title.data());
}

void PictureWindow::show() {
  xcb_map_window(connection_.raw(), id_);
}

void PictureWindow::raise() {
  const std::uint32_t above = XCB_STACK_MODE_ABOVE;
  xcb_configure_window(connection_.raw(), id_, XCB_CONFIG_WINDOW_STACK_MODE, &above);
}

void PictureWindow::place(ScreenRect place) {
  const std::uint32_t values[] = {static_cast<std::uint32_t>(place.x),
                                  static_cast<std::uint32_t>(place.y), place.width, place.height};
  xcb_configure_window(connection_.raw(), id_,
                       XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                           XCB_CONFIG_WINDOW_HEIGHT,
                       values);
}

// As the window's background, the X server draws the picture whenever it has to be drawn again.
void PictureWindow::draw(const Picture &picture) {
  xcb_connection_t *raw = connection_.raw();
  const auto width = static_cast<std::uint16_t>(picture.width),
             height = static_cast<std::uint16_t>(picture.height);
  const auto data = image_data(picture, *xcb_get_setup(raw), *pixels_.visual, pixels_.depth);
  const xcb_pixmap_t pixmap = xcb_generate_id(raw);
  const xcb_gcontext_t context = xcb_generate_id(raw);
  xcb_create_pixmap(raw, pixels_.depth, pixmap, id_, width, height);
  xcb_create_gc(raw, context, pixmap, 0, nullptr);
  xcb_put_image(raw, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, context, width, height, 0, 0, 0,
                pixels_.depth, static_cast<std::uint32_t>(data.size()), data.data());
  xcb_change_window_attributes(raw, id_, XCB_CW_BACK_PIXMAP, &pixmap);
  xcb_clear_area(raw, 0, id_, 0, 0, 0, 0);
  xcb_free_gc(raw, context);
  xcb_free_pixmap(raw, pixmap);
}

void PictureWindow::cut(ScreenRect part, double radius) {
  const auto *extension = xcb_get_extension_data(connection_.raw(), &xcb_shape_id);
  if (!extension || !extension->present) {
    return; // the corners stay square
  }
  const int height = static_cast<int>(part.height);
  std::vector<xcb_rectangle_t> rows;
  for (int row = 0; row < height; ++row) {
    const int gap = corner_cut(row, height, radius);
    rows.push_back({static_cast<std::int16_t>(part.x + gap),
                    static_cast<std::int16_t>(part.y + row),
                    static_cast<std::uint16_t>(static_cast<int>(part.width) - 2 * gap), 1});
  }
  xcb_shape_rectangles(connection_.raw(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING,
                       XCB_CLIP_ORDERING_YX_BANDED, id_, 0, 0,
                       static_cast<std::uint32_t>(rows.size()), rows.data());
}

} // namespace td
