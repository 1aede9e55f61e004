#pragma once

namespace ZR::benchmarks {

// One function a subsystem: each registers the comparisons of its public operations.
void compareInputsAndOutputs();
void compareDimmableDevices();
void compareFeatureDetection();
void compareLoading();
void compareCan();
/// False where the terminal's cameras are not there: nothing can stand for them.
bool compareCameras();
void compareVideoInputs();
void compareNotifications();
void compareEndPoints();

}  // namespace ZR::benchmarks
