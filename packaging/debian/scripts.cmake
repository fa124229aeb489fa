# Run by cpack when the packages are made. It gives each that holds a shared
# library scripts that call ldconfig; today a trigger does that, and we have it.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  set(content ${CPACK_TEMPORARY_DIRECTORY}/content)
  execute_process(COMMAND dpkg-deb -R ${package} ${content} COMMAND_ERROR_IS_FATAL ANY)
  if(EXISTS ${content}/DEBIAN/triggers)
    file(REMOVE ${content}/DEBIAN/postinst ${content}/DEBIAN/postrm)
    execute_process(COMMAND dpkg-deb --root-owner-group -b ${content} ${package} OUTPUT_QUIET
                    COMMAND_ERROR_IS_FATAL ANY)
  endif()
  file(REMOVE_RECURSE ${content})
endforeach()
