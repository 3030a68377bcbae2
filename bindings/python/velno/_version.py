# SPDX-License-Identifier: Apache-2.0
"""The version that this binding belongs to. Made by scripts/generate: do not edit."""

VERSION = "0.2.0"
