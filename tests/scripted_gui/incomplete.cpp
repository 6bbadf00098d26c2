// An interface module without tdgui_run.
extern "C" bool tdgui_available() {
  return true;
}
