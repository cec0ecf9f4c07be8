# Outside libraries, found with pkg-config. Optional ones leave their formats answering "codec missing".
set(SONVALE_FORMAT_LIBS "")
set(SONVALE_EFFECT_LIBS "")
set(SONVALE_CLI_LIBS "")

pkg_check_modules(GSM IMPORTED_TARGET gsm)
if(GSM_FOUND)
  list(APPEND SONVALE_FORMAT_LIBS PkgConfig::GSM)
  add_compile_definitions(SONVALE_HAVE_GSM=1)
else()
  # Debian's libgsm1-dev ships no .pc file.
  find_path(GSM_INCLUDE gsm.h PATH_SUFFIXES gsm)
  find_library(GSM_LIBRARY gsm)
  if(GSM_INCLUDE AND GSM_LIBRARY)
    add_library(sonvale_gsm INTERFACE)
    target_include_directories(sonvale_gsm INTERFACE ${GSM_INCLUDE})
    target_link_libraries(sonvale_gsm INTERFACE ${GSM_LIBRARY})
    list(APPEND SONVALE_FORMAT_LIBS sonvale_gsm)
    add_compile_definitions(SONVALE_HAVE_GSM=1)
  endif()
endif()

# The band equaliser cannot work without an FFT.
pkg_check_modules(FFTW3F REQUIRED IMPORTED_TARGET fftw3f)
list(APPEND SONVALE_EFFECT_LIBS PkgConfig::FFTW3F)
add_compile_definitions(SONVALE_HAVE_FFTW=1)

# Loudness (integrated, range, true peak) for normalising and reports.
pkg_check_modules(EBUR128 REQUIRED IMPORTED_TARGET libebur128)
list(APPEND SONVALE_EFFECT_LIBS PkgConfig::EBUR128)

# Tempo and pitch are stretched by librubberband.
pkg_check_modules(RUBBERBAND REQUIRED IMPORTED_TARGET rubberband)
list(APPEND SONVALE_EFFECT_LIBS PkgConfig::RUBBERBAND)

# Rate conversion sits in the engine.
set(SONVALE_ENGINE_LIBS "")
pkg_check_modules(SOXR IMPORTED_TARGET soxr)
if(SOXR_FOUND)
  list(APPEND SONVALE_ENGINE_LIBS PkgConfig::SOXR)
  add_compile_definitions(SONVALE_HAVE_SOXR=1)
endif()

# FFmpeg, LAME and the sound servers are loaded at run time (dlopen) when first
# needed, so a start maps none of them: only their headers are used here, and
# the loader asks for the soname of the library found now, since the headers'
# structures hold for that major version alone.
function(sonvale_soname out library)
  set(_name "")
  if(CMAKE_OBJDUMP AND EXISTS "${library}")
    execute_process(COMMAND ${CMAKE_OBJDUMP} -p "${library}" OUTPUT_VARIABLE _dump ERROR_QUIET)
    if(_dump MATCHES "SONAME +([^\n ]+)")
      set(_name "${CMAKE_MATCH_1}")
    endif()
  endif()
  if(NOT _name)
    get_filename_component(_name "${library}" NAME)
  endif()
  set(${out} "${_name}" PARENT_SCOPE)
endfunction()

# The soname of lib (a name as for -l) in the folders given, as a definition NAME_SONAME="...".
function(sonvale_soname_definition out define lib)
  find_library(SONVALE_${define}_LIBRARY ${lib} HINTS ${ARGN})
  if(SONVALE_${define}_LIBRARY)
    sonvale_soname(_soname "${SONVALE_${define}_LIBRARY}")
  else()
    set(_soname "lib${lib}.so")
  endif()
  set(${out} "SONVALE_${define}_SONAME=\"${_soname}\"" PARENT_SCOPE)
endfunction()

# Decoding and encoding of the formats we do not read ourselves.
pkg_check_modules(FFMPEG libavformat libavcodec libavutil libswresample)
if(FFMPEG_FOUND)
  add_library(sonvale_ffmpeg_headers INTERFACE)
  target_include_directories(sonvale_ffmpeg_headers INTERFACE ${FFMPEG_INCLUDE_DIRS})
  target_compile_options(sonvale_ffmpeg_headers INTERFACE ${FFMPEG_CFLAGS_OTHER})
  foreach(_lib avutil swresample avcodec avformat)
    string(TOUPPER ${_lib} _define)
    sonvale_soname_definition(_definition ${_define} ${_lib} ${FFMPEG_LIBRARY_DIRS})
    target_compile_definitions(sonvale_ffmpeg_headers INTERFACE ${_definition})
  endforeach()
  list(APPEND SONVALE_FORMAT_LIBS sonvale_ffmpeg_headers)
  add_compile_definitions(SONVALE_HAVE_FFMPEG=1)
endif()

# Debian's LAME ships no .pc file.
find_path(LAME_INCLUDE lame/lame.h)
find_library(LAME_LIBRARY mp3lame)
if(LAME_INCLUDE AND LAME_LIBRARY)
  add_library(sonvale_lame INTERFACE)
  target_include_directories(sonvale_lame INTERFACE ${LAME_INCLUDE})
  sonvale_soname(_soname "${LAME_LIBRARY}")
  target_compile_definitions(sonvale_lame INTERFACE "SONVALE_LAME_SONAME=\"${_soname}\"")
  list(APPEND SONVALE_FORMAT_LIBS sonvale_lame)
  add_compile_definitions(SONVALE_HAVE_LAME=1)
endif()

# Line editing for the interactive shell.
pkg_check_modules(LIBEDIT IMPORTED_TARGET libedit)
if(LIBEDIT_FOUND)
  list(APPEND SONVALE_CLI_LIBS PkgConfig::LIBEDIT)
  add_compile_definitions(SONVALE_HAVE_LIBEDIT=1)
endif()

# Sound devices; without either, only the null device plays and records. Their
# definitions stay on the audio layer, so finding them rebuilds nothing else.
set(SONVALE_AUDIO_LIBS "")
set(SONVALE_AUDIO_DEFINITIONS "")
pkg_check_modules(PULSE libpulse)
if(PULSE_FOUND)
  add_library(sonvale_pulse_headers INTERFACE)
  target_include_directories(sonvale_pulse_headers INTERFACE ${PULSE_INCLUDE_DIRS})
  target_compile_options(sonvale_pulse_headers INTERFACE ${PULSE_CFLAGS_OTHER})
  list(APPEND SONVALE_AUDIO_LIBS sonvale_pulse_headers)
  sonvale_soname_definition(_definition PULSE pulse ${PULSE_LIBRARY_DIRS})
  list(APPEND SONVALE_AUDIO_DEFINITIONS SONVALE_HAVE_PULSE=1 ${_definition})
endif()
pkg_check_modules(ALSA alsa)
if(ALSA_FOUND)
  add_library(sonvale_alsa_headers INTERFACE)
  target_include_directories(sonvale_alsa_headers INTERFACE ${ALSA_INCLUDE_DIRS})
  target_compile_options(sonvale_alsa_headers INTERFACE ${ALSA_CFLAGS_OTHER})
  list(APPEND SONVALE_AUDIO_LIBS sonvale_alsa_headers)
  sonvale_soname_definition(_definition ASOUND asound ${ALSA_LIBRARY_DIRS})
  list(APPEND SONVALE_AUDIO_DEFINITIONS SONVALE_HAVE_ALSA=1 ${_definition})
endif()
