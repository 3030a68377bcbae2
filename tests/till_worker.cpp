// SPDX-License-Identifier: Apache-2.0

// A small till over velnotill.h, to be killed: takes what to do from standard input, a line each, and tells
// the outcome.
//
//     sell KEY JSON | z KEY | answer KEY NUMBER
//     KEY RESULT STATE QUESTION FIRST SECOND PROBLEM

#include "velnotill.h"

#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>

namespace {

int obey(VelnoTill *till, const std::string &verb, const std::string &key, const std::string &rest,
         VelnoTillOutcome *outcome)
{
    if (verb == "sell")
        return velnotill_sell(till, key.c_str(), rest.c_str(), outcome);
    if (verb == "z")
        return velnotill_z_report(till, key.c_str(), outcome);
    return velnotill_answer(till, key.c_str(), std::atoi(rest.c_str()), "Test", outcome);
}

} // namespace

/** LEDGER PORT ANSWER-LIMIT */
int main(int argc, char **argv)
{
    if (argc != 4)
        return 64;
    VelnoTillSettings settings{};
    settings.size = sizeof settings;
    settings.appNo = 5;
    settings.serial = "UB1234567890";
    settings.address = "127.0.0.1";
    settings.ledger = argv[1];
    settings.port = unsigned(std::atoi(argv[2]));
    settings.answerLimit = unsigned(std::atoi(argv[3]));
    settings.connectTimeout = 2 * settings.answerLimit;
    settings.patience = settings.answerLimit;
    VelnoTill *till = nullptr;
    if (velnotill_open(&till, &settings) != 0) {
        std::cerr << velnotill_problem() << std::endl;
        return 1;
    }
    for (std::string line; std::getline(std::cin, line);) {
        std::istringstream words(line);
        std::string verb, key, rest;
        words >> verb >> key >> std::ws;
        std::getline(words, rest);
        VelnoTillOutcome outcome{};
        outcome.size = sizeof outcome;
        const int result = obey(till, verb, key, rest, &outcome);
        std::cout << key << ' ' << result << ' ' << outcome.state << ' ' << outcome.question << ' '
                  << outcome.reference.first << ' ' << outcome.reference.second << ' '
                  << (result != 0 ? velnotill_problem() : "") << std::endl;
    }
    return velnotill_close(till);
}
