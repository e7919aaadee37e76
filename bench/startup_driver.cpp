// The process that the start-up benchmark launches: with "init" it calls initialize(), without it
// only loads the library, so the difference of the two is what start-up costs a fresh process.
#include <fl/i18n/initialize.hpp>

#include <cstring>

int main(int argc, char** argv)
{
    if (argc > 1 && std::strcmp(argv[1], "init") == 0)
        fl::i18n::initialize();
    return 0;
}
