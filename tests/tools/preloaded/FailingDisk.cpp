// Loaded before the system's own functions, makes the disk fail whenever something waits for it.

#include <cerrno>

extern "C" {

[[gnu::visibility("default")]] int fsync(int /*descriptor*/)
{
    errno = EIO;
    return -1;
}

[[gnu::visibility("default")]] int fdatasync(int /*descriptor*/)
{
    errno = EIO;
    return -1;
}
}
