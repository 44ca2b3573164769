// Writes a synthetic tree for the size benchmarks: many small files in nested folders, with the
// awkward cases a real disk has — symbolic links (dangling, looping, pointing up the tree and at
// a large file), hard links and sparse files.
//
//   make_tree DIR [--files=1000000] [--folders=100000] [--depth=12] [--seed=1]
//
// DIR must not exist yet. Deterministic for a given seed.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

long option(int argc, char** argv, const char* name, long fallback) {
    std::string prefix = std::string("--") + name + "=";
    for (int i = 2; i < argc; ++i) {
        if (std::strncmp(argv[i], prefix.c_str(), prefix.size()) == 0) {
            return std::strtol(argv[i] + prefix.size(), nullptr, 10);
        }
    }
    return fallback;
}

void fail(const std::string& what) {
    std::perror(what.c_str());
    std::exit(1);
}

void writeFile(const std::string& path, std::size_t bytes) {
    static const std::string block(65536, 'x');
    int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0644);
    if (fd < 0)
        fail(path);
    while (bytes > 0) {
        std::size_t n = std::min(bytes, block.size());
        if (::write(fd, block.data(), n) != static_cast<ssize_t>(n))
            fail(path);
        bytes -= n;
    }
    ::close(fd);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: make_tree DIR [--files=N] [--folders=N] [--depth=N]\n");
        return 2;
    }
    const std::string root = argv[1];
    const long files = option(argc, argv, "files", 1'000'000);
    const long folders = option(argc, argv, "folders", 100'000);
    const long maxDepth = option(argc, argv, "depth", 12);
    std::mt19937_64 rng(static_cast<unsigned long>(option(argc, argv, "seed", 1)));

    if (::mkdir(root.c_str(), 0755) != 0)
        fail(root);

    // Folders: each new one goes under a random earlier one that is not yet at the depth limit,
    // which gives a bushy tree with some long chains.
    std::vector<std::string> dirs{root};
    std::vector<int> depth{0};
    while (static_cast<long>(dirs.size()) < folders + 1) {
        std::size_t parent = rng() % dirs.size();
        if (depth[parent] >= maxDepth)
            continue;
        std::string p = dirs[parent] + "/d" + std::to_string(dirs.size());
        if (::mkdir(p.c_str(), 0755) != 0)
            fail(p);
        dirs.push_back(p);
        depth.push_back(depth[parent] + 1);
    }

    // Files: mostly small, some empty, a few of a few hundred KiB.
    long hardLinks = 0, symlinks = 0, sparse = 0;
    std::string bigFile;
    for (long i = 0; i < files; ++i) {
        const std::string& dir = dirs[1 + rng() % (dirs.size() - 1)];
        std::string p = dir + "/f" + std::to_string(i);
        unsigned kind = static_cast<unsigned>(rng() % 1000);
        if (kind < 2 && i > 0) {
            // A hard link to an earlier file: counted once by du, once per name by a walk.
            std::string target = dirs[1 + (i % (dirs.size() - 1))] + "/h" + std::to_string(i);
            writeFile(target, 700);
            if (::link(target.c_str(), p.c_str()) != 0)
                fail(p);
            ++hardLinks;
            ++i;
        } else if (kind < 4) {
            std::string target;
            switch (rng() % 4) {
                case 0:
                    target = "no-such-file-" + std::to_string(i);
                    break;  // dangling
                case 1:
                    target = "../..";
                    break;  // up the tree
                case 2:
                    target = p;
                    break;  // loops to itself
                default:
                    target = bigFile.empty() ? "/" : bigFile;
                    break;  // a large file
            }
            if (::symlink(target.c_str(), p.c_str()) != 0)
                fail(p);
            ++symlinks;
        } else if (kind < 5) {
            // Sparse: a 64 MiB hole with 4 KiB of data at the end.
            int fd = ::open(p.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0644);
            if (fd < 0 || ::ftruncate(fd, 64 << 20) != 0)
                fail(p);
            if (::pwrite(fd, "sparse", 6, (64 << 20) - 4096) != 6)
                fail(p);
            ::close(fd);
            ++sparse;
        } else if (kind < 50) {
            writeFile(p, 0);
        } else if (kind < 60) {
            writeFile(p, 200 * 1024 + rng() % (200 * 1024));
            if (bigFile.empty())
                bigFile = p;
        } else {
            writeFile(p, 100 + rng() % 3000);
        }
    }
    std::printf(
        "%s: %ld files, %ld folders (depth <= %ld), %ld hard links, %ld symlinks, %ld sparse\n",
        root.c_str(), files, folders, maxDepth, hardLinks, symlinks, sparse);
    return 0;
}
