# Read by cpack before it packs what was installed: moves, compresses and adds what a .deb has
# differently.
if(NOT CPACK_GENERATOR STREQUAL "DEB")
  return()
endif()

# compress(FILE): to FILE.gz, without its name and time.
function(compress file)
  execute_process(COMMAND gzip -9n ${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  set(share ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share)
  # Regardless of the sources' permissions: in an archive made by git, the group may write.
  file(COPY ${CPACK_TANDREL_COPYRIGHT} ${CPACK_TANDREL_CHANGELOG}
    DESTINATION ${share}/doc/${package} NO_SOURCE_PERMISSIONS)
  file(COPY ${CPACK_TANDREL_OVERRIDES}/${package}
    DESTINATION ${share}/lintian/overrides NO_SOURCE_PERMISSIONS)
  compress(${share}/doc/${package}/changelog)
  if(component STREQUAL "launcher")
    compress(${share}/man/man1/tandrel.1)
    file(RENAME ${share}/zsh/site-functions ${share}/zsh/vendor-completions)
  endif()
endforeach()
