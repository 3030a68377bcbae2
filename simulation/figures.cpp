// SPDX-License-Identifier: Apache-2.0

#include "simulation/figures.h"

namespace Simulation {

void Figures::add(const Figures &other)
{
    for (qint64 Figures::*sum :
         {&Figures::receipts, &Figures::closed, &Figures::refused, &Figures::cancelled, &Figures::asked,
          &Figures::mishaps, &Figures::commands, &Figures::flushes, &Figures::deaths})
        this->*sum += other.*sum;
    for (size_t i = 0; i < questions.size(); ++i)
        questions.at(i) += other.questions.at(i);
}

} // namespace Simulation
