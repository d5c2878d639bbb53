#pragma once

/// Marks what the library gives its users; all else stays inside it. A class is marked
/// as a whole, so that its type information is one for all libraries and a cast or a
/// `catch` in one knows the objects of another.
#define TREL_API [[gnu::visibility("default")]]
