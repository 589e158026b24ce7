// Which thread is the user-interface (main) thread.
#pragma once

namespace scrivlet {

// True on the thread that started the process, or on the one a backend named with markMainThread.
bool isMainThread();
// Makes the calling thread the main thread (a backend whose event loop runs elsewhere calls it).
void markMainThread();

}  // namespace scrivlet
