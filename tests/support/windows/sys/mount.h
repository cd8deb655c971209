// All of it is in posix.h.
#pragma once
