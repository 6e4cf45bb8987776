// The recording launcher that action tests install in place of the real one.
#include "harness/launch_recorder.h"

LaunchRecorder::LaunchRecorder(bool started) : started_(started) {
    previous_ = InstallLauncher([this](const LaunchRequest& request) {
        requests_.push_back(request);
        return started_;
    });
}

LaunchRecorder::~LaunchRecorder() {
    InstallLauncher(std::move(previous_));
}
