#pragma once

/// Marks what a platform library gives its users, see TREL_API of the library above.
#define TREL_PLATFORM_API [[gnu::visibility("default")]]
