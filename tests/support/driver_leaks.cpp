// Graphics drivers and Assimp's readers leave memory behind that is not ours to mend. The leak checker can only tell it
// apart by the library's name, so under the address sanitizer what was loaded stays loaded to the end of the process.

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TW2_CHECKS_LEAKS
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define TW2_CHECKS_LEAKS
#endif

#ifdef TW2_CHECKS_LEAKS
extern "C" [[gnu::visibility("default")]] int dlclose(void*) noexcept
{
    return 0;
}

extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions()
{
    return "leak:_dri.so\nleak:libEGL_mesa.so\nleak:libGLX\nleak:libX11\nleak:libLLVM\nleak:libassimp\n";
}

extern "C" [[gnu::visibility("default")]] const char* __asan_default_options()
{
    // Of thread-local memory that is made late the checker only guesses where it begins. For one place in 256 it is
    // wrong, and then reads where nothing is. It finds that memory without this, as any other.
    return "intercept_tls_get_addr=0"
#ifdef TW2_CRASHES_ARE_SIGNALS
           // The command tells by the signal that an importer crashed.
           ":handle_segv=0:handle_sigbus=0:handle_sigfpe=0"
#endif
        ;
}
#endif
