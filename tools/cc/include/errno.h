#ifndef VELKOR_ERRNO_H
#define VELKOR_ERRNO_H

extern int errno;

#define ENOENT 2
#define EINTR 4
#define EIO 5
#define ENOMEM 12
#define EINVAL 22
#define EDOM 33
#define ERANGE 34

#endif
