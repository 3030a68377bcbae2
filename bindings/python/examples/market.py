# SPDX-License-Identifier: Apache-2.0
"""A market's sale that comes through lost answers.

    python3 market.py SERIAL ADDRESS:PORT LEDGER KEY

Each run with another key sells one basket; one with the same key sells nothing more, and tells how it stands.
Against the simulated register, which loses the answers to the start and to both payments:

    velno-register --serial UB1234567890 --connect 127.0.0.1:4100 --show-receipts \\
        --fault 'lost-answer=change-state*3' >/dev/null &
    python3 market.py UB1234567890 0.0.0.0:4100 till.ledger 4711
"""

import sys
from decimal import Decimal

import velno

BASKET: velno.Receipt = {
    "items": [
        {"name": "Tam Buğday Ekmeği", "price": Decimal("12.50"), "quantity": 2, "section": 1},
        {"name": "Domates", "price": Decimal("39.90"), "quantity": "1.250", "unit": "kilogram", "section": 2},
        {"name": "Ayran", "price": Decimal("15.00"), "quantity": 3, "section": 3, "percentage": -10},
    ],
    "payments": [{"cash": Decimal("50.00")}, {"card": "rest"}],
    "reenterCash": True,
}


def tell(stage: velno.Stage, order: velno.Outcome) -> None:
    """For the cashier's display."""
    print(f"  {order.key}: {stage.name.lower().replace('_', ' ')}")


def ask(till: velno.Till, order: velno.Outcome) -> None:
    """What cannot be known a person has to say. Nobody guesses here, so the order waits for its answer."""
    print(order.message("tr"), file=sys.stderr)
    print(f'When it is known: till.answer("{order.key}", velno.Answer.PAID, person="Ayşe")', file=sys.stderr)


def main() -> int:
    if len(sys.argv) != 5:
        print(__doc__, file=sys.stderr)
        return 64
    serial, listen, ledger, key = sys.argv[1:]
    try:
        with velno.Till(serial, listen=listen, app=5, ledger=ledger, progress=tell) as till:
            till.work()  # what an earlier run has left
            order = till.sell(BASKET, key=key)
            if order.needs_person:
                ask(till, order)
    except velno.Error as problem:
        print(problem, file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        print("Interrupted: run it again with the same key, and it goes on.", file=sys.stderr)
        return 130
    print(order.message())
    return 0 if order.is_closed else 2


if __name__ == "__main__":
    sys.exit(main())
