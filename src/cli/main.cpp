#include "AudioDrivers.h"
#include "CommandRunner.h"
#include "Console.h"
#include "Interruption.h"

#include <exception>

int main(int argc, char** argv) {
    using namespace tambrel::cli;
    tambrel::prepareForAudioDrivers();
    Interruption::listen();
    int status = aFileFailed;
    try {
        status = runCommandLine(argc, argv);
    } catch (const UsageError& error) {
        complain("tambrel-midi: " + std::string(error.what()) + "\n");
        status = wrongUsage;
    } catch (const std::system_error& error) {
        complain("tambrel-midi: Standard output: " + error.code().message() + "\n");
    } catch (const std::exception& error) {
        complain("tambrel-midi: " + std::string(error.what()) + "\n");
    }
    Interruption::die();
    return status;
}
