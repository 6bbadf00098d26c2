# The .rpm packages.
set(CPACK_RPM_COMPONENT_INSTALL ON)
set(CPACK_RPM_PACKAGE_RELEASE 1.${release})
set(CPACK_RPM_FILE_NAME RPM-DEFAULT)
set(CPACK_RPM_PACKAGE_LICENSE "none has been chosen")
set(CPACK_RPM_PACKAGE_GROUP Applications/Multimedia)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  set(CPACK_RPM_${component}_PACKAGE_NAME ${${component}_package})
  set(CPACK_RPM_${component}_PACKAGE_SUMMARY ${${component}_summary})
  set(CPACK_RPM_${component}_PACKAGE_DESCRIPTION ${${component}_description})
endforeach()
set(CPACK_RPM_launcher_PACKAGE_REQUIRES curl)
set(CPACK_RPM_launcher_PRE_UNINSTALL_SCRIPT_FILE ${CMAKE_CURRENT_SOURCE_DIR}/rpm/preun)
set(CPACK_RPM_interface_PACKAGE_REQUIRES "tandrel = ${TANDREL_VERSION}-${CPACK_RPM_PACKAGE_RELEASE}")
set(CPACK_RPM_suite_PACKAGE_REQUIRES tandrel)
set(CPACK_RPM_suite_PACKAGE_CONFLICTS tandrel-standins)
set(CPACK_RPM_standins_PACKAGE_REQUIRES tandrel)
set(CPACK_RPM_standins_PACKAGE_CONFLICTS tandrel-suite)

# These belong to other packages.
set(icon_folders scalable)
foreach(size IN LISTS TANDREL_ICON_SIZES)
  list(APPEND icon_folders ${size}x${size})
endforeach()
list(TRANSFORM icon_folders PREPEND /usr/share/icons/hicolor/)
list(TRANSFORM icon_folders APPEND /apps OUTPUT_VARIABLE icon_subfolders)
set(CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
  /usr/libexec /usr/share/applications /usr/share/bash-completion
  /usr/share/bash-completion/completions /usr/share/doc /usr/share/fish
  /usr/share/fish/vendor_completions.d /usr/share/icons /usr/share/icons/hicolor ${icon_folders}
  ${icon_subfolders} /usr/share/man /usr/share/man/man1 /usr/share/systemd /usr/share/systemd/user
  /usr/share/zsh /usr/share/zsh/site-functions)

# The same programs give the same bytes each time if SOURCE_DATE_EPOCH is set.
set(CPACK_RPM_SPEC_MORE_DEFINE
"%define _build_id_links none
%define __brp_compress %{nil}
%define _buildhost localhost
%define use_source_date_epoch_as_buildtime 1
%define clamp_mtime_to_source_date_epoch 1")
