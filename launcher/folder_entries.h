/// Reading a folder.
#pragma once

#include <string>

#include <dirent.h>

/// Calls `visit` with the name of each entry of `folder`, "." and ".." included. False: the folder
/// cannot be opened.
template <typename Visit> bool for_each_entry(const std::string &folder, Visit visit) {
  DIR *entries = opendir(folder.c_str());
  if (entries == nullptr) {
    return false;
  }
  while (const dirent *entry = readdir(entries)) {
    visit(entry->d_name);
  }
  closedir(entries);
  return true;
}
