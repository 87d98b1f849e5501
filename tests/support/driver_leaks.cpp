// Graphics drivers leave memory behind that is not ours to mend. The leak checker can only tell it apart by the
// driver's name, so under the address sanitizer what was loaded stays loaded to the end of the process.

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
    return "leak:_dri.so\nleak:libEGL_mesa.so\nleak:libLLVM\n";
}
#endif
