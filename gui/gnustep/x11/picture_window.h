/// A window that shows a picture, without GNUstep.
#pragma once

#include "x11/connection.h"
#include "x11/picture.h"

namespace td {

/// How a window stores pixels.
struct PixelKind {
  const xcb_visualtype_t *visual;
  std::uint8_t depth;
  /// Whether its windows are see-through where a picture is.
  bool has_alpha() const { return depth == 32; }
};

/// The default screen's.
PixelKind screen_pixels(Connection &connection);
/// Pixels with alpha where another program puts see-through windows together, else the default
/// screen's.
PixelKind see_through_pixels(Connection &connection);
/// The pixels of a visual of the default screen; the default ones when there is none of that id.
PixelKind pixels_of_visual(Connection &connection, xcb_visualid_t visual);

/// A window, which the X server or other programs may destroy: then nothing shows any more, and
/// nothing fails. The destructor destroys it. It is not shown before show().
class PictureWindow {
public:
  /// Whether a window manager places the window and decides what covers it.
  enum class Managed { no, yes };

  /// `connection` must outlive the window. `events`: what arrives from the window.
  PictureWindow(Connection &connection, PixelKind pixels, ScreenRect place, Managed managed,
                std::uint32_t events);
  ~PictureWindow();
  PictureWindow(const PictureWindow &) = delete;
  PictureWindow &operator=(const PictureWindow &) = delete;

  xcb_window_t id() const { return id_; }
  const PixelKind &pixels() const { return pixels_; }

  /// What other programs call the window. Its class is the program's name.
  void set_title(const std::string &title);
  /// Maps the window. A new window is above all others.
  void show();
  void raise();
  void place(ScreenRect place);
  /// Shows a picture of the window's size from now on.
  void draw(const Picture &picture);
  /// Cuts everything off the window but `part`, relative to it, with rounded corners.
  void cut(ScreenRect part, double radius);

private:
  Connection &connection_;
  PixelKind pixels_;
  xcb_window_t id_;
  xcb_colormap_t colours_;
};

} // namespace td
