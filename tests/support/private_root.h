#pragma once

#include <string>

/// @file
/// Files of the private machine. Every operation throws std::runtime_error when it fails, and
/// refuses to work when the machine is not private, so that no test can touch the real /sys.
/// Paths are absolute; missing parent folders are made.

namespace ZR::test {

/// Makes or replaces a file with exactly @p content.
void makeFile(const std::string& path, const std::string& content);

/// The whole content of a file.
std::string readFile(const std::string& path);

/// Removes a file, a link or a folder with all that is in it; nothing happens when it is missing.
void removeFile(const std::string& path);

void makeFolder(const std::string& path);

/// Makes @p path a symbolic link to @p target.
void makeLink(const std::string& path, const std::string& target);

/// Makes @p path a character device that behaves as /dev/null.
void makeDeviceNode(const std::string& path);

/// Makes @p path the character device /dev/@p name: null, zero, full, tty, random or urandom.
/// A program that keeps writing to "full" meets ENOSPC.
void makeDeviceNode(const std::string& path, const std::string& name);

void makeFifo(const std::string& path);

/// Tells whether @p path exists; links are not followed.
bool exists(const std::string& path);

}  // namespace ZR::test
