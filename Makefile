# Corvella — the two commands a new user needs: `make run` and `make test`.
BUILD_DIR ?= build
# SANITIZE=1: the same, with AddressSanitizer and UndefinedBehaviorSanitizer, in its own folder.
ifeq ($(SANITIZE),1)
BUILD_DIR := build-sanitize
CMAKE_OPTIONS += -DCORVELLA_SANITIZE=ON
endif
JOBS ?= $(shell nproc)

# Debian 12 packages building and running need (README, "Dependencies"); the tests need more: the
# browsers they drive, a display, the sanitizers' and the fuzzer's compiler, the package checks.
BUILD_PACKAGES := cmake g++ make pkg-config \
	qt6-base-dev qt6-base-dev-tools qt6-svg-dev libgl-dev qt6-tools-dev qt6-l10n-tools qt6-translations-l10n \
	libsqlite3-dev libplist-dev nlohmann-json3-dev libleveldb-dev libsnappy-dev liblz4-dev librsvg2-bin
TEST_PACKAGES := clang-format sqlite3 dbus dbus-x11 xvfb xauth desktop-file-utils appstream \
	chromium firefox-esr python3 python3-pyatspi python3-dbus python3-lz4 python3-snappy at-spi2-core dpkg-dev lintian man-db clang \
	libfuzzer-14-dev strace

.PHONY: all deps test-deps configure build e2e-deps test run bench reliability format clean package install translations fuzz

all: build

# Installs the packages named (as root with apt-get, waiting for another install to finish; otherwise
# names them); with "npm" as the second argument, Node's package manager too.
define install-missing
	@missing=$$(for p in $(1); do \
		dpkg-query -W -f='$${Status}' $$p 2>/dev/null | grep -q 'install ok installed' || echo $$p; done; \
		[ "$(2)" != npm ] || command -v npm >/dev/null || echo nodejs npm); \
	if [ -n "$$missing" ]; then \
		if [ "$$(id -u)" = 0 ]; then \
			echo "Installing missing packages:" $$missing; \
			apt-get -o DPkg::Lock::Timeout=600 update -qq && DEBIAN_FRONTEND=noninteractive \
				apt-get -o DPkg::Lock::Timeout=600 install -y -qq $$missing >/dev/null; \
		else \
			echo "Missing Debian packages:" $$missing; \
			echo "Install them with: sudo apt-get install" $$missing; exit 1; \
		fi; \
	fi
endef

deps:
	$(call install-missing,$(BUILD_PACKAGES))

test-deps:
	$(call install-missing,$(BUILD_PACKAGES) $(TEST_PACKAGES),npm)

configure: deps
	@cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo $(CMAKE_OPTIONS) >/dev/null

build: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS) -- --no-print-directory

# The end-to-end tests drive the browsers with puppeteer-core, at the version the lock file names
# (it never downloads a browser). Without the registry the end-to-end test is skipped and says why.
e2e-deps: test-deps
	@cd tests/e2e && { [ node_modules/.package-lock.json -nt package-lock.json ] || \
		npm ci --no-audit --no-fund --loglevel=error >/dev/null || \
		echo "npm ci failed: the end-to-end test will be skipped"; }

# Then each fuzz target briefly with libFuzzer (once: not again in the sanitizer run): a fixed number of
# inputs from a fixed seed, so the suite finds the same as on every other machine and never fails at
# random; `make fuzz` searches anew for as long as it is given.
FUZZ_TEST_RUNS ?= 100000
test: test-deps build e2e-deps
	@cd $(BUILD_DIR) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j $(JOBS)
ifneq ($(SANITIZE),1)
	@$(MAKE) --no-print-directory fuzz FUZZ_RUNS=$(FUZZ_TEST_RUNS)
endif

run: build
	@$(BUILD_DIR)/bin/corvella

# The Debian package (corvella_VERSION-1_ARCH.deb, in the build folder).
package: build
	$(call install-missing,dpkg-dev)
	@cd $(BUILD_DIR) && cpack

# Installs below PREFIX (default /usr/local); DESTDIR stages it elsewhere.
PREFIX ?= /usr/local
install: build
	@cmake --install $(BUILD_DIR) --prefix $(PREFIX)

# Gathers new and changed texts of the sources into translations/*.ts, for translating.
translations: configure
	@cmake --build $(BUILD_DIR) --target translations

# Every benchmark and a table of their figures; about 20 minutes, and 4 GB in /var/tmp.
bench: build
	@bash bench/run-all.sh $(BUILD_DIR)/bin

# The fault-injection tools at full strength (README, "Reliability"): about 50 minutes, as root.
reliability: build
	@bash bench/kill-clean.sh $(BUILD_DIR)/bin 1000 0.1
	@python3 bench/settings_writers.py $(BUILD_DIR)/bin/bench-settings-writer 5000
	@bash bench/full-disk.sh $(BUILD_DIR)/bin
	@bash bench/browser-starts.sh $(BUILD_DIR)/bin 50

# Fuzzes each parser of outside data for FUZZ_SECONDS (or FUZZ_RUNS inputs from seed 1; libFuzzer,
# clang, with the sanitizers), from its seed corpus; findings land in tests/fuzz/regressions/NAME and
# are replayed by every build.
FUZZ_SECONDS ?= 60
FUZZ_RUNS ?=
fuzz: test-deps
	@CC=clang CXX=clang++ cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo \
		-DCORVELLA_SANITIZE=ON -DCORVELLA_FUZZ=ON -DCORVELLA_FUZZ_LIMIT=$(if $(FUZZ_RUNS),runs=$(FUZZ_RUNS),$(FUZZ_SECONDS)) >/dev/null
	@cmake --build build-fuzz -j $(JOBS) --target corvella_fuzzers -- --no-print-directory
	@cd build-fuzz && ctest -R '^fuzz_' --output-on-failure

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	@rm -rf $(BUILD_DIR)
