#pragma once

#include "core/vercel/VercelAPI.h"

#include <optional>

struct CliCommand;
struct Connection;
class KeychainStore;

// Exit codes shared by the commands.
inline constexpr int kExitFailed = 1; // Vercel or the network refused the request
inline constexpr int kExitUsage = 2;  // bad arguments or environment: nothing was sent

// The client for one command: the token from VERCEL_TOKEN only (an argument would show in the
// process list), the address from QUILLON_API_BASE. When either is unusable, says why on
// standard error and answers absent.
std::optional<VercelAPI> apiFromEnvironment();

// The API address from QUILLON_API_BASE (or Vercel's); when unusable, says why on standard error
// and answers absent.
std::optional<QUrl> apiBaseFromEnvironment();

// The token for a run against the account: VERCEL_TOKEN when set, else the one stored in the
// keyring. When there is none, says how to provide one on standard error and answers absent.
std::optional<QString> tokenFromEnvironmentOrKeyring(KeychainStore& keychain);

// Whether a command that runs once, started at `start`, stops waiting for the account: the
// check failed for good, or its next attempt comes more than 30 s after the start.
bool oneShotGivesUp(const Connection& connection, const QDateTime& start);
// "Connection failed: " and why, on standard error.
void printConnectionFailure(const Connection& connection);

// Prints the sentence of a failed request on standard error; answers kExitFailed.
int reportFailure(const RequestError& error);

// Prints the command's usage on standard output.
void printUsage(const CliCommand& command);
// For a command that takes no arguments: prints its usage for --help (0) or refuses anything else
// (kExitUsage). Absent when there are none and the command runs.
std::optional<int> answerWithoutArguments(const QStringList& args, const CliCommand& command);

// Every column but the last padded to its widest cell, two spaces between columns.
QStringList alignedLines(const QList<QStringList>& rows);
