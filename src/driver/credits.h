// Who wrote the program and on what terms, one line each, for the banner of the help and the header of every
// score list.
#pragma once

constexpr const char* CREDIT_AUTHORS = "Written by the ZELVAN developers";
constexpr const char* CREDIT_LICENCE = "Free software under the BSD 3-clause licence, see the file LICENSE";
