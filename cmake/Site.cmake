# What a distributor sets to values of its own: the one file to change, or set them on the command
# line.
set(THERMIKA_DOWNLOAD_HOST "download.thermika.example" CACHE STRING
    "Host of the vendor's file server")
set(THERMIKA_DOCUMENTATION_URL "https://docs.thermika.example/index.html" CACHE STRING
    "Address of the documentation's index page, named in every configuration document")
# Not below the prefix by default: configuration documents name this directory.
set(THERMIKA_DATA_DIR "/usr/share/libthermika" CACHE PATH
    "Directory of the cameras' files; their calibration lies in its folder cali")
