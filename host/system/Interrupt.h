/// @file Interrupt.h
/// Ending on request: Ctrl-C, hang-up, termination.
#pragma once

namespace qmx::host
{
/// From now on SIGINT, SIGTERM and SIGHUP only leave a mark (those that were ignored stay so), and writing into a
/// closed pipe is an error like any other instead of the end of the program, so that unfinished files are always
/// removed.
void CatchInterrupts();

/// Called between frames. @throw HostError  ExitCode::Failed once one of those signals has come
void ThrowIfInterrupted();
} // namespace qmx::host
