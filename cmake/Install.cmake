# What an installation holds. It works wherever it is put: every library finds the others by its own place.

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/Marovine)

# ---- to run ----

install(TARGETS marovine marovine-studio RUNTIME COMPONENT runtime)
install(TARGETS Marovine fglib5 hap_runtime tavr_hw log_dispatcher
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/${applet_folder} COMPONENT runtime)
install(TARGETS gentl LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/${applet_folder} COMPONENT producer)
install(TARGETS virtualboard EXPORT Marovine
        LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${CMAKE_BINARY_DIR}/Marovine.hap DESTINATION ${CMAKE_INSTALL_DATADIR}/marovine COMPONENT runtime)

# Packages of Debian hold their manual pages packed.
set(pack_pages ${CMAKE_COMMAND} -E true)
if(MAROVINE_PACKAGES)
    set(pack_pages gzip -9nfr ${CMAKE_BINARY_DIR}/texts/man)
endif()
# Manual pages and completion are made from the texts of the help.
set(command_texts ${CMAKE_BINARY_DIR}/texts)
set(completion_files)
foreach(shell_file bash:marovine zsh:_marovine fish:marovine.fish)
    string(REPLACE ":" ";" shell_file ${shell_file})
    list(GET shell_file 0 shell)
    list(GET shell_file 1 file)
    list(APPEND completion_files COMMAND sh -c "\"$0\" completion \"$1\" >\"$2\"" $<TARGET_FILE:marovine> ${shell}
         ${command_texts}/${shell}/${file})
endforeach()
add_custom_command(OUTPUT ${command_texts}/made
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${command_texts}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${command_texts}/bash ${command_texts}/zsh ${command_texts}/fish
    COMMAND marovine docs man ${command_texts}/man
    COMMAND ${pack_pages}
    ${completion_files}
    COMMAND ${CMAKE_COMMAND} -E touch ${command_texts}/made
    DEPENDS marovine COMMENT "Manual pages and completion" VERBATIM)
add_custom_target(command_texts ALL DEPENDS ${command_texts}/made)
install(DIRECTORY ${command_texts}/man/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT runtime)
install(FILES ${command_texts}/bash/marovine
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT runtime)
install(FILES ${command_texts}/zsh/_marovine
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions COMPONENT runtime)
install(FILES ${command_texts}/fish/marovine.fish
        DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT runtime)

# ---- to build with ----

find_package(PNG REQUIRED)
find_package(hwy REQUIRED)
# The client and the rooms below it as one library.
add_library(marovine_client STATIC)
foreach(room client pictures files family base board_imaging)
    target_sources(marovine_client PRIVATE $<TARGET_OBJECTS:${room}>)
endforeach()
set_target_properties(marovine_client PROPERTIES EXPORT_NAME client LINKER_LANGUAGE CXX)
target_link_libraries(marovine_client PUBLIC virtualboard PRIVATE PNG::PNG isal hwy::hwy Threads::Threads ${CMAKE_DL_LIBS})
# The headers of both are of this age.
target_compile_features(virtualboard INTERFACE cxx_std_20)
target_include_directories(marovine_client INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/marovine>)
set_target_properties(virtualboard PROPERTIES EXPORT_NAME board)
# What a host of the applet includes; it opens the applet itself.
set_target_properties(marovine_headers PROPERTIES EXPORT_NAME host)

install(TARGETS marovine_client marovine_headers EXPORT Marovine ARCHIVE COMPONENT development
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY include/marovine DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
        FILES_MATCHING PATTERN "*.h")
install(DIRECTORY client DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/marovine COMPONENT development
        FILES_MATCHING PATTERN "*.h")
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libmarovine-dev COMPONENT development)

include(CMakePackageConfigHelpers)
configure_package_config_file(cmake/MarovineConfig.cmake.in MarovineConfig.cmake
    INSTALL_DESTINATION ${package_folder}
    PATH_VARS CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(MarovineConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(EXPORT Marovine NAMESPACE Marovine:: DESTINATION ${package_folder} COMPONENT development)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/MarovineConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/MarovineConfigVersion.cmake
        DESTINATION ${package_folder} COMPONENT development)
file(RELATIVE_PATH prefix_from_pkgconfig ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/marovine.pc.in marovine.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/marovine.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT development)

# All that is installed, for who does not wait for tests.
add_custom_target(product DEPENDS
    marovine marovine-studio Marovine virtualboard fglib5 hap_runtime tavr_hw log_dispatcher gentl marovine_client
    command_texts)

# Takes away what the last installation from this build put there.
configure_file(cmake/uninstall.cmake.in uninstall.cmake @ONLY)
add_custom_target(uninstall COMMAND ${CMAKE_COMMAND} -P ${CMAKE_CURRENT_BINARY_DIR}/uninstall.cmake
                  COMMENT "Uninstalling" VERBATIM)
