# cmake -DBUNDLE=... -DLAUNCHER=... -DSUITE_DIR=... -DPLIST=... -DICON=... -P assemble.cmake
#
# Makes the application bundle BUNDLE, replacing an old one, from the launcher, the suite's programs in
# SUITE_DIR, the Info.plist and the icon. It only copies, so it works on every system.
cmake_minimum_required(VERSION 3.25)

set(programs ${LAUNCHER})
file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/../programs suite)
foreach(name IN LISTS suite)
  list(APPEND programs ${SUITE_DIR}/${name})
endforeach()
foreach(file ${programs} ${PLIST} ${ICON})
  if(NOT EXISTS ${file})
    message(FATAL_ERROR "${BUNDLE} needs ${file}, which does not exist")
  endif()
endforeach()

file(REMOVE_RECURSE ${BUNDLE})
file(MAKE_DIRECTORY ${BUNDLE}/Contents/MacOS ${BUNDLE}/Contents/Resources)
foreach(program ${programs})
  get_filename_component(name ${program} NAME)
  # Copies the file even if this is a link to it.
  file(COPY_FILE ${program} ${BUNDLE}/Contents/MacOS/${name})
endforeach()
file(COPY_FILE ${PLIST} ${BUNDLE}/Contents/Info.plist)
file(COPY_FILE ${ICON} ${BUNDLE}/Contents/Resources/Tandrel.icns)
file(WRITE ${BUNDLE}/Contents/PkgInfo "APPL????")
