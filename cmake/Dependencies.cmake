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

# Rate conversion sits in the engine.
set(SONVALE_ENGINE_LIBS "")
pkg_check_modules(SOXR IMPORTED_TARGET soxr)
if(SOXR_FOUND)
  list(APPEND SONVALE_ENGINE_LIBS PkgConfig::SOXR)
  add_compile_definitions(SONVALE_HAVE_SOXR=1)
endif()

# Decoding and encoding of the formats we do not read ourselves.
pkg_check_modules(FFMPEG IMPORTED_TARGET libavformat libavcodec libavutil libswresample)
if(FFMPEG_FOUND)
  list(APPEND SONVALE_FORMAT_LIBS PkgConfig::FFMPEG)
  add_compile_definitions(SONVALE_HAVE_FFMPEG=1)
endif()

# Debian's LAME ships no .pc file.
find_path(LAME_INCLUDE lame/lame.h)
find_library(LAME_LIBRARY mp3lame)
if(LAME_INCLUDE AND LAME_LIBRARY)
  add_library(sonvale_lame INTERFACE)
  target_include_directories(sonvale_lame INTERFACE ${LAME_INCLUDE})
  target_link_libraries(sonvale_lame INTERFACE ${LAME_LIBRARY})
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
pkg_check_modules(PULSE IMPORTED_TARGET libpulse)
if(PULSE_FOUND)
  list(APPEND SONVALE_AUDIO_LIBS PkgConfig::PULSE)
  list(APPEND SONVALE_AUDIO_DEFINITIONS SONVALE_HAVE_PULSE=1)
endif()
pkg_check_modules(ALSA IMPORTED_TARGET alsa)
if(ALSA_FOUND)
  list(APPEND SONVALE_AUDIO_LIBS PkgConfig::ALSA)
  list(APPEND SONVALE_AUDIO_DEFINITIONS SONVALE_HAVE_ALSA=1)
endif()
