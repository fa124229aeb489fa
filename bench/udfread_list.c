/* Lists the names of a UDF image with libudfread, for comparison: the library
 * has no command of its own. Prints one path a line. */
#include <stdio.h>
#include <string.h>
#include <udfread/udfread.h>

static void list(UDFDIR* folder, char* path, size_t length, size_t size) {
  struct udfread_dirent entry;
  while (udfread_readdir(folder, &entry) != NULL) {
    const size_t name = strlen(entry.d_name);
    if (strcmp(entry.d_name, ".") == 0 || strcmp(entry.d_name, "..") == 0) continue;
    if (length + name + 2 > size) continue;
    memcpy(path + length, entry.d_name, name + 1);
    puts(path);
    if (entry.d_type != UDF_DT_DIR) continue;
    UDFDIR* below = udfread_opendir_at(folder, entry.d_name);
    if (below == NULL) continue;
    path[length + name] = '/';
    list(below, path, length + name + 1, size);
    udfread_closedir(below);
  }
}

int main(int argc, char** argv) {
  char path[4096] = "";
  udfread* image = udfread_init();
  if (argc != 2 || image == NULL || udfread_open(image, argv[1]) < 0) return 1;
  UDFDIR* root = udfread_opendir(image, "/");
  if (root == NULL) return 1;
  list(root, path, 0, sizeof path);
  udfread_closedir(root);
  udfread_close(image);
  return 0;
}
