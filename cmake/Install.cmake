# What `cmake --install` puts where, and the Debian package of it (`cpack` in the build directory).
include(GNUInstallDirs)

# A package holds the programs only: `cpack` after the target `programs`, without tests and benchmarks.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)

# ts5_compressed(FILE DIRECTORY): installs the file as FILE.gz, as the system wants manual pages and changelogs.
function(ts5_compressed file directory)
  get_filename_component(name ${file} NAME)
  set(packed ${CMAKE_BINARY_DIR}/${name}.gz)
  # Without a time stamp, so that the same sources give the same package.
  execute_process(COMMAND gzip -9nc ${CMAKE_SOURCE_DIR}/${file} OUTPUT_FILE ${packed} COMMAND_ERROR_IS_FATAL ANY)
  set_property(DIRECTORY ${CMAKE_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${file})
  install(FILES ${packed} DESTINATION ${directory})
endfunction()

install(TARGETS ts5-batch)
install(TARGETS ts5-batch-full DESTINATION ${CMAKE_INSTALL_LIBEXECDIR})
ts5_compressed(docs/ts5-batch.1 ${CMAKE_INSTALL_MANDIR}/man1)
ts5_compressed(packaging/changelog ${CMAKE_INSTALL_DATADIR}/doc/stavora-ts5)
install(FILES ${CMAKE_SOURCE_DIR}/scripts/completion.bash
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME ts5-batch)
# Where zsh looks below /usr/local, and below /usr for what a package brings.
foreach(place site-functions vendor-completions)
  install(FILES ${CMAKE_SOURCE_DIR}/scripts/completion.zsh
          DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/${place} RENAME _ts5-batch)
endforeach()
install(FILES ${CMAKE_SOURCE_DIR}/packaging/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/stavora-ts5)

# What a beginner sees and hears first; the broken file is for the show of the console.
install(DIRECTORY ${CMAKE_SOURCE_DIR}/demo DESTINATION ${CMAKE_INSTALL_DATADIR}/stavora-ts5
        FILES_MATCHING PATTERN "*.mid" PATTERN "*.rmi" PATTERN "*.rdl" PATTERN "*.stv" PATTERN "LICENCES.md"
        PATTERN "Abgebrochene Datei.mid" EXCLUDE
        PATTERN "scores" EXCLUDE PATTERN "show" EXCLUDE)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/src/resources/layouts DESTINATION ${CMAKE_INSTALL_DATADIR}/stavora-ts5)

if(TARGET stavora-ts5)
  set(icons ${CMAKE_SOURCE_DIR}/src/resources/icons)
  set(themed ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable)
  install(TARGETS stavora-ts5)
  ts5_compressed(docs/stavora-ts5.1 ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES ${CMAKE_SOURCE_DIR}/packaging/stavora-ts5.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
  install(FILES ${CMAKE_SOURCE_DIR}/packaging/stavora-ts5.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages)
  install(FILES ${icons}/stavora-ts5.svg DESTINATION ${themed}/apps)
  # The files of the system show in file managers with the icons that they have in the program.
  foreach(pair "filelist:filesicon" "score:stvicon" "score+xml:stvxicon" "parameterset:paramseticon"
               "artwork:pictureicon")
    string(REPLACE ":" ";" pair ${pair})
    list(GET pair 0 type)
    list(GET pair 1 icon)
    install(FILES ${icons}/${icon}.svg DESTINATION ${themed}/mimetypes RENAME application-x-stavora-${type}.svg)
  endforeach()
  install(FILES ${icons}/rdlicon.svg DESTINATION ${themed}/mimetypes RENAME application-x-rondelis-sequence.svg)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME stavora-ts5)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "Die Entwickler von Stavora Tonstudio 5 <stavora-ts5@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Werkbank für MIDI-, Noten- und Audio-Dateien")
set(CPACK_PACKAGE_DESCRIPTION
"Siebzehn Filter für Musiker spielen, durchsuchen, wandeln, brennen und drucken
MIDI-, Noten- und Audio-Dateien, einzeln oder ganze Verzeichnisse in einem Zug.
Zum Paket gehören die Arbeitsfläche stavora-ts5 und das Konsolenprogramm
ts5-batch mit denselben Filtern, Jobs und Ergebnissen.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# What is not linked but needed at run time: the sound font of the built-in synthesiser.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "timgm6mb-soundfont")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "xdg-utils, shared-mime-info, hicolor-icon-theme, qt6-wayland")
include(CPack)
