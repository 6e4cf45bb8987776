// Stands in for the process launcher while it lives: records each request and answers as told.
#pragma once

#include "frame/process_launcher.h"

#include <vector>

class LaunchRecorder {
public:
    // Every request is answered with `started`: whether the process could be started.
    explicit LaunchRecorder(bool started = true);
    ~LaunchRecorder();
    LaunchRecorder(const LaunchRecorder&) = delete;
    LaunchRecorder& operator=(const LaunchRecorder&) = delete;

    const std::vector<LaunchRequest>& Requests() const { return requests_; }
    void AnswerWith(bool started) { started_ = started; }

private:
    std::vector<LaunchRequest> requests_;
    bool started_;
    Launcher previous_;
};
