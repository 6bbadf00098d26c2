# Writes a page into a C++ source file: cmake -DPAGE=... -DOUTPUT=... -P embed_page.cmake
file(READ "${PAGE}" text)
file(WRITE "${OUTPUT}" "#include \"dashboard.h\"

std::string_view standin::dashboard_page() {
  return R\"page_text(${text})page_text\";
}
")
