#include "descriptors.h"
#include "temporary_folder.h"

#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

bool is_dev_null(int descriptor) {
  struct stat info = {};
  struct stat null = {};
  return fstat(descriptor, &info) == 0 && stat("/dev/null", &null) == 0 &&
         info.st_rdev == null.st_rdev && S_ISCHR(info.st_mode);
}

TEST(OpenClosedStandardStreams, PutsEachClosedOneOnDevNullAndNoOther) {
  for (int closed = 0; closed < 8; ++closed) { // a bit for each of the three
    const pid_t pid = fork();
    if (pid == 0) {
      const int other = open("/", O_RDONLY);
      for (int descriptor = 0; descriptor < 3; ++descriptor) {
        dup2(other, descriptor);
        if ((closed >> descriptor & 1) != 0) {
          close(descriptor);
        }
      }
      open_closed_standard_streams();
      bool right = true;
      for (int descriptor = 0; descriptor < 3; ++descriptor) {
        right = right && is_dev_null(descriptor) == ((closed >> descriptor & 1) != 0);
        right = right && fcntl(descriptor, F_GETFD) == 0;
      }
      _exit(right ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(pid, &status, 0), pid);
    EXPECT_EQ(status, 0) << closed;
  }
}

TEST(HighestListedDescriptor, IsTheHighestNumberAndSomeMore) {
  const TemporaryFolder folder;
  for (const char *name : {"0", "1", "2", "10", "9"}) {
    (void)folder.write(name, "");
  }
  EXPECT_EQ(highest_listed_descriptor(folder.path.string()), 10 + 64);
}

TEST(HighestListedDescriptor, IsAssumedWhereNothingIsListed) {
  const TemporaryFolder folder;
  EXPECT_EQ(highest_listed_descriptor(folder.prefix() + "missing"), 65535);
}

} // namespace
