#include "platform/utility.h"

// Printable, so that it travels in JSON, forms and shells as it is; the random end keeps it from being anybody's
// choice.
const char gszFakePass[] = "[stored-password-6f1e0b9c42d7]";
