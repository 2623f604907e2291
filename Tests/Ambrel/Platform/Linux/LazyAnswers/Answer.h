#pragma once

/// What two libraries have under one name: each answers with its own number.
extern "C" int lazyAnswer();
