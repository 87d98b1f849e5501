// What happens when the library is loaded, beside its static data. It starts no thread and needs to know of none.

// A static library is attached by nobody.
#if defined(_WIN32) && !defined(TW2_STATIC_DEFINE)
#include <windows.h>

// NOLINTNEXTLINE(readability-identifier-naming): the system looks for this name
extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID)
{
    if (reason == DLL_PROCESS_ATTACH)
    {
        // Not granted to a library with storage of its own per thread; calls that do nothing harm nothing.
        DisableThreadLibraryCalls(instance);
    }
    return TRUE;
}
#endif
