// An interface module without its tdgui_run.
extern "C" bool tdgui_available() {
  return true;
}
