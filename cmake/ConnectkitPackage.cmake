# What `cmake --install` gives a host: the shared library (connectkit.dll with
# its import library, or libconnectkit.so), stripped, with its debug
# information in a separate file beside it; the public headers; the log4cplus
# it shares with its host; on Windows the C++ runtime DLLs; and the CMake
# package behind find_package(connectkit) with the target connectkit::connectkit.
include(CMakePackageConfigHelpers)

if(WIN32)
  set(CONNECTKIT_LIBRARY_DIR bin)
else()
  set(CONNECTKIT_LIBRARY_DIR lib)
endif()

# connectkit.dll and log4cplus.dll hand std::wstring and output streams to
# each other: they must share one C++ runtime, so mingw links it as DLLs
# (cmake/mingw-w64-x86_64.cmake) and they ship with the library.
set(CONNECTKIT_RUNTIME_DLLS)
if(MINGW)
  foreach(dll libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${dll}
      OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT IS_ABSOLUTE "${path}" OR NOT EXISTS "${path}")
      message(FATAL_ERROR "The compiler does not know where ${dll} is")
    endif()
    file(REAL_PATH "${path}" path)
    list(APPEND CONNECTKIT_RUNTIME_DLLS ${path})
  endforeach()
  get_target_property(log4cplus_dll log4cplus::log4cplusU IMPORTED_LOCATION_RELEASE)
  list(APPEND CONNECTKIT_RUNTIME_DLLS ${log4cplus_dll})
  # The programs of the build tree run from its top folder, where Windows
  # looks first for the DLLs a program needs.
  file(COPY ${CONNECTKIT_RUNTIME_DLLS} DESTINATION ${PROJECT_BINARY_DIR})
endif()

install(TARGETS connectkit EXPORT connectkitTargets
  RUNTIME DESTINATION bin LIBRARY DESTINATION lib ARCHIVE DESTINATION lib)
install(CODE "
  set(library \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CONNECTKIT_LIBRARY_DIR}/$<TARGET_FILE_NAME:connectkit>\")
  message(STATUS \"Stripping: \${library}, debug information in \${library}.debug\")
  execute_process(COMMAND ${CMAKE_OBJCOPY} --only-keep-debug \${library} \${library}.debug
    COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND ${CMAKE_OBJCOPY} --strip-all --add-gnu-debuglink=\${library}.debug \${library}
    COMMAND_ERROR_IS_FATAL ANY)")
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ DESTINATION include)

# log4cplus as the bootstrap built it: headers, library and CMake package.
install(DIRECTORY ${CONNECTKIT_DEPS_DIR}/include/log4cplus DESTINATION include)
install(DIRECTORY ${CONNECTKIT_DEPS_DIR}/lib/cmake/log4cplus DESTINATION lib/cmake)
install(DIRECTORY ${CONNECTKIT_DEPS_DIR}/lib/ DESTINATION lib
  FILES_MATCHING PATTERN "liblog4cplusU*" PATTERN "cmake" EXCLUDE PATTERN "pkgconfig" EXCLUDE)
if(MINGW)
  install(FILES ${CONNECTKIT_RUNTIME_DLLS} DESTINATION bin)
  # The compiler's own copies carry their debug information (libstdc++ is
  # 23 MB with it); a host ships them without.
  foreach(dll ${CONNECTKIT_RUNTIME_DLLS})
    get_filename_component(name ${dll} NAME)
    install(CODE "execute_process(COMMAND ${CMAKE_OBJCOPY} --strip-debug
      \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/bin/${name}\" COMMAND_ERROR_IS_FATAL ANY)")
  endforeach()
endif()

set(CONNECTKIT_RUNTIME_DLL_NAMES)
if(WIN32)
  set(CONNECTKIT_RUNTIME_DLL_NAMES $<TARGET_FILE_NAME:connectkit>)
  foreach(dll ${CONNECTKIT_RUNTIME_DLLS})
    get_filename_component(name ${dll} NAME)
    list(APPEND CONNECTKIT_RUNTIME_DLL_NAMES ${name})
  endforeach()
endif()
install(EXPORT connectkitTargets NAMESPACE connectkit:: DESTINATION lib/cmake/connectkit)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/connectkitConfig.cmake.in
  ${PROJECT_BINARY_DIR}/connectkitConfig.cmake.gen INSTALL_DESTINATION lib/cmake/connectkit)
file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/connectkitConfig.cmake
  INPUT ${PROJECT_BINARY_DIR}/connectkitConfig.cmake.gen)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/connectkitConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/connectkitConfig.cmake
  ${PROJECT_BINARY_DIR}/connectkitConfigVersion.cmake DESTINATION lib/cmake/connectkit)
