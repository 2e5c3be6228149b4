# What Debian wants in packages and a plain installation does not have. CPack runs this over the files before it packs
# them: a folder for every part.
string(TIMESTAMP today "%a, %d %b %Y %H:%M:%S +0000" UTC)
foreach(part IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${part} PART)
  set(package ${CPACK_DEBIAN_${PART}_PACKAGE_NAME})
  set(share ${CPACK_TEMPORARY_DIRECTORY}/${part}/usr/share)
  set(documents ${share}/doc/${package})

  file(MAKE_DIRECTORY ${documents})
  file(READ ${CPACK_QMX_SOURCE_DIR}/LICENSE licence)
  file(WRITE ${documents}/copyright "${licence}
On Debian systems the texts of the licences named above are in these files:
Apache License 2.0: /usr/share/common-licenses/Apache-2.0
GPL 2 and 3: /usr/share/common-licenses/GPL-2, /usr/share/common-licenses/GPL-3
LGPL 2.1: /usr/share/common-licenses/LGPL-2.1
")
  if(EXISTS ${documents}/LICENSE)
    file(REMOVE ${documents}/LICENSE)
    file(CREATE_LINK copyright ${documents}/LICENSE SYMBOLIC) # where README.md leads
  endif()
  file(WRITE ${documents}/changelog
"qmx (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium

  * The changes are listed in /usr/share/doc/qmx/CHANGELOG.md of the package
    qmx.

 -- ${CPACK_PACKAGE_CONTACT}  ${today}
")
  file(GLOB_RECURSE compressed ${share}/man/*.1)
  foreach(file IN LISTS compressed ITEMS ${documents}/changelog)
    execute_process(COMMAND gzip -9n ${file} COMMAND_ERROR_IS_FATAL ANY)
  endforeach()
  if(EXISTS ${share}/zsh/site-functions)
    file(RENAME ${share}/zsh/site-functions ${share}/zsh/vendor-completions)
  endif()
endforeach()

# The libraries come together and change their binary interface together. CPack calls ldconfig beside the trigger.
set(runtime ${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME})
file(WRITE ${CPACK_TEMPORARY_DIRECTORY}/runtime/usr/share/lintian/overrides/${runtime}
"${runtime}: package-name-doesnt-match-sonames
${runtime}: maintscript-calls-ldconfig
")
