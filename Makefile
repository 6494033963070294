# Corvella — the two commands a new user needs: `make run` and `make test`.
BUILD_DIR ?= build
JOBS ?= $(shell nproc)

# Debian 12 packages the build and the tests need (README, "Dependencies").
PACKAGES := cmake g++ make pkg-config clang-format \
	qt6-base-dev qt6-base-dev-tools qt6-svg-dev libgl-dev \
	libsqlite3-dev sqlite3 libplist-dev nlohmann-json3-dev libleveldb-dev libsnappy-dev \
	dbus dbus-x11 xvfb xauth chromium firefox-esr

.PHONY: all deps configure build test run bench format clean

all: build

deps:
	@missing=$$(for p in $(PACKAGES); do \
		dpkg-query -W -f='$${Status}' $$p 2>/dev/null | grep -q 'install ok installed' || echo $$p; done); \
	if [ -n "$$missing" ]; then \
		if [ "$$(id -u)" = 0 ]; then \
			echo "Installing missing packages:" $$missing; \
			apt-get update -qq && DEBIAN_FRONTEND=noninteractive apt-get install -y -qq $$missing >/dev/null; \
		else \
			echo "Missing Debian packages:" $$missing; \
			echo "Install them with: sudo apt-get install" $$missing; exit 1; \
		fi; \
	fi

configure: deps
	@cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null

build: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS) -- --no-print-directory

test: build
	@cd $(BUILD_DIR) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j $(JOBS)

run: build
	@$(BUILD_DIR)/bin/corvella

bench: build
	@$(BUILD_DIR)/bin/bench-quit-latency
	@bash bench/agent-idle.sh $(BUILD_DIR)/bin
	@$(BUILD_DIR)/bin/bench-remove-tree
	@bash bench/cache-clean.sh $(BUILD_DIR)/bin

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	@rm -rf $(BUILD_DIR)
