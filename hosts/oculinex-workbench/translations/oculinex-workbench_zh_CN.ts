<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en_US">
<context>
    <name>DlgOperator</name>
    <message>
        <source>What the operator sees</source>
        <translation>操作员界面的内容</translation>
    </message>
    <message>
        <source>Task that is counted</source>
        <translation>统计的任务</translation>
    </message>
    <message>
        <source>View</source>
        <translation>视图</translation>
    </message>
    <message>
        <source>OK is a printed text that begins with</source>
        <translation>判为合格：输出文字的开头</translation>
    </message>
    <message>
        <source>NOK is a printed text that begins with</source>
        <translation>判为不合格：输出文字的开头</translation>
    </message>
    <message>
        <source>While both are empty, each run is OK. A task that fails, or that a step has stopped, is NOK in any case.</source>
        <translation>两者都为空时，每次运行都算合格。任务出错或被步骤停止时，一律算不合格。</translation>
    </message>
    <message>
        <source>Settings that the operator may change, with their range:</source>
        <translation>操作员可以修改的参数及其范围：</translation>
    </message>
    <message>
        <source>Setting</source>
        <translation>参数</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>名称</translation>
    </message>
    <message>
        <source>From</source>
        <translation>最小</translation>
    </message>
    <message>
        <source>To</source>
        <translation>最大</translation>
    </message>
    <message>
        <source>Now</source>
        <translation>当前值</translation>
    </message>
    <message>
        <source>%1 needs a name and a range of two numbers.</source>
        <translation>%1 需要名称和由两个数字给出的范围。</translation>
    </message>
    <message>
        <source>%1: the step takes numbers from %2 to %3 only.</source>
        <translation>%1：步骤只接受 %2 到 %3 的数值。</translation>
    </message>
    <message>
        <source>%1: the range has to hold the present number, %2.</source>
        <translation>%1：范围必须包含当前值 %2。</translation>
    </message>
</context>
<context>
    <name>Document</name>
    <message>
        <source>this is no file</source>
        <translation>这不是文件</translation>
    </message>
    <message>
        <source>it holds no task</source>
        <translation>其中没有任务</translation>
    </message>
    <message>
        <source>Untitled</source>
        <translation>未命名</translation>
    </message>
    <message>
        <source>the path has characters that the locale lacks</source>
        <translation>路径中有当前区域设置无法表示的字符</translation>
    </message>
    <message>
        <source>what stands in the file is not what was written</source>
        <translation>文件中的内容与写入的不一致</translation>
    </message>
    <message>
        <source>Stop the tasks that this changes first.</source>
        <translation>请先停止受影响的任务。</translation>
    </message>
    <message>
        <source>edit of %1</source>
        <translation>修改 %1</translation>
    </message>
    <message>
        <source>add task</source>
        <translation>添加任务</translation>
    </message>
    <message>
        <source>%1 (copy)</source>
        <translation>%1（副本）</translation>
    </message>
    <message>
        <source>duplicate task</source>
        <translation>复制任务</translation>
    </message>
    <message>
        <source>remove task</source>
        <translation>移除任务</translation>
    </message>
    <message>
        <source>move task</source>
        <translation>移动任务</translation>
    </message>
    <message>
        <source>rename task</source>
        <translation>重命名任务</translation>
    </message>
    <message>
        <source>move step</source>
        <translation>移动步骤</translation>
    </message>
    <message>
        <source>switch step on</source>
        <translation>启用步骤</translation>
    </message>
    <message>
        <source>switch step off</source>
        <translation>停用步骤</translation>
    </message>
    <message>
        <source>choose what the operator sees</source>
        <translation>设定操作员界面</translation>
    </message>
    <message>
        <source>lose data source</source>
        <translation>丢失数据源</translation>
    </message>
    <message>
        <source>A task needs a name.</source>
        <translation>任务必须有名称。</translation>
    </message>
    <message>
        <source>No task can be called %1: the tasks file uses these signs itself.</source>
        <translation>任务不能命名为 %1：任务文件自身使用这些符号。</translation>
    </message>
    <message>
        <source>%1 (copy %2)</source>
        <translation>%1（副本 %2）</translation>
    </message>
    <message>
        <source>it could not be saved: %1</source>
        <translation>无法保存：%1</translation>
    </message>
</context>
<context>
    <name>Figures</name>
    <message>
        <source>%1 s</source>
        <translation>%1 秒</translation>
    </message>
    <message>
        <source>%1 min %2 s</source>
        <translation>%1 分 %2 秒</translation>
    </message>
</context>
<context>
    <name>FlowPage</name>
    <message>
        <source>none</source>
        <translation>无</translation>
    </message>
    <message>
        <source>%1 (can&apos;t be made)</source>
        <translation>%1（无法创建）</translation>
    </message>
    <message>
        <source>Data source…</source>
        <translation>数据源…</translation>
    </message>
    <message>
        <source>The view that the task draws into</source>
        <translation>任务绘图所用的视图</translation>
    </message>
    <message>
        <source>View %1</source>
        <translation>视图 %1</translation>
    </message>
    <message>
        <source>The core of the processor that the task&apos;s thread stays on</source>
        <translation>任务线程所固定的处理器核心</translation>
    </message>
    <message>
        <source>Any core</source>
        <translation>任意核心</translation>
    </message>
    <message>
        <source>Core %1</source>
        <translation>核心 %1</translation>
    </message>
    <message>
        <source>Choose where the task&apos;s pictures come from</source>
        <translation>选择任务图像的来源</translation>
    </message>
    <message>
        <source>add step</source>
        <translation>添加步骤</translation>
    </message>
    <message>
        <source>delete step</source>
        <translation>删除步骤</translation>
    </message>
</context>
<context>
    <name>FlowPane</name>
    <message>
        <source>&amp;Add step…</source>
        <translation>添加步骤(&amp;A)…</translation>
    </message>
    <message>
        <source>Add a step: before the selected one, or at the end when none is selected</source>
        <translation>添加步骤：插在选中步骤之前；没有选中时加在末尾</translation>
    </message>
    <message>
        <source>&amp;Configure step…</source>
        <translation>配置步骤(&amp;C)…</translation>
    </message>
    <message>
        <source>Open the window of the selected step</source>
        <translation>打开选中步骤的配置窗口</translation>
    </message>
    <message>
        <source>&amp;Delete step…</source>
        <translation>删除步骤(&amp;D)…</translation>
    </message>
    <message>
        <source>Delete the selected step; undo brings it back</source>
        <translation>删除选中的步骤，可以撤销</translation>
    </message>
    <message>
        <source>Move step &amp;up</source>
        <translation>上移步骤(&amp;U)</translation>
    </message>
    <message>
        <source>Move the selected step up</source>
        <translation>把选中的步骤上移</translation>
    </message>
    <message>
        <source>Move step d&amp;own</source>
        <translation>下移步骤(&amp;O)</translation>
    </message>
    <message>
        <source>Move the selected step down</source>
        <translation>把选中的步骤下移</translation>
    </message>
    <message>
        <source>&amp;Switch step on or off</source>
        <translation>启用或停用步骤(&amp;S)</translation>
    </message>
    <message>
        <source>A step that is off keeps its limit for later</source>
        <translation>停用的步骤会记住它的次数上限</translation>
    </message>
    <message>
        <source>Run to &amp;here</source>
        <translation>执行到此处(&amp;H)</translation>
    </message>
    <message>
        <source>Run the flow once, up to the selected step</source>
        <translation>执行一次流程，到选中的步骤为止</translation>
    </message>
    <message>
        <source>Just a moment…</source>
        <translation>请稍候…</translation>
    </message>
    <message>
        <source>No task yet.
Add one in the list of tasks, or open a tasks file.</source>
        <translation>还没有任务。
请在任务列表中添加，或打开任务文件。</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>停止</translation>
    </message>
    <message>
        <source>Run</source>
        <translation>运行</translation>
    </message>
    <message>
        <source>Stop the task; its present run ends first</source>
        <translation>停止任务；当前这一次运行会先结束</translation>
    </message>
    <message>
        <source>Run the flow again and again</source>
        <translation>反复执行流程</translation>
    </message>
    <message>
        <source>configure step</source>
        <translation>配置步骤</translation>
    </message>
</context>
<context>
    <name>LogModel</name>
    <message>
        <source>error</source>
        <translation>错误</translation>
    </message>
    <message>
        <source>print</source>
        <translation>输出</translation>
    </message>
    <message>
        <source>log</source>
        <translation>日志</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>时间</translation>
    </message>
    <message>
        <source>Kind</source>
        <translation>类别</translation>
    </message>
    <message>
        <source>Text</source>
        <translation>内容</translation>
    </message>
</context>
<context>
    <name>LogPane</name>
    <message>
        <source>Copy</source>
        <translation>复制</translation>
    </message>
    <message>
        <source>Show lines of this kind</source>
        <translation>显示这一类的行</translation>
    </message>
    <message>
        <source>Errors</source>
        <translation>错误</translation>
    </message>
    <message>
        <source>Prints</source>
        <translation>输出</translation>
    </message>
    <message>
        <source>Log</source>
        <translation>日志</translation>
    </message>
    <message>
        <source>Only lines that hold this text</source>
        <translation>只显示包含此文字的行</translation>
    </message>
    <message>
        <source>Copy the selected lines, or all that are shown</source>
        <translation>复制选中的行；没有选中时复制显示的全部</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>清空</translation>
    </message>
    <message>
        <source>Remove all lines</source>
        <translation>移除所有行</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>%1 was changed by another program since it was read or saved here.</source>
        <translation>%1 在这里打开或保存之后，已被其他程序修改。</translation>
    </message>
    <message>
        <source>&amp;Overwrite</source>
        <translation>覆盖(&amp;O)</translation>
    </message>
    <message>
        <source>Starting %1…</source>
        <translation>正在启动 %1…</translation>
    </message>
    <message>
        <source>Stopping %1…</source>
        <translation>正在停止 %1…</translation>
    </message>
    <message>
        <source>Running %1 once…</source>
        <translation>正在单次运行 %1…</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>文件(&amp;F)</translation>
    </message>
    <message>
        <source>Tool bar</source>
        <translation>工具栏</translation>
    </message>
    <message>
        <source>&amp;New</source>
        <translation>新建(&amp;N)</translation>
    </message>
    <message>
        <source>Begin with no task</source>
        <translation>从空白开始</translation>
    </message>
    <message>
        <source>&amp;Open…</source>
        <translation>打开(&amp;O)…</translation>
    </message>
    <message>
        <source>Open a tasks file</source>
        <translation>打开任务文件</translation>
    </message>
    <message>
        <source>Open &amp;recent</source>
        <translation>最近的文件(&amp;R)</translation>
    </message>
    <message>
        <source>&amp;Save</source>
        <translation>保存(&amp;S)</translation>
    </message>
    <message>
        <source>Save the tasks file (%1)</source>
        <translation>保存任务文件 (%1)</translation>
    </message>
    <message>
        <source>Save &amp;as…</source>
        <translation>另存为(&amp;A)…</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>退出(&amp;Q)</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>编辑(&amp;E)</translation>
    </message>
    <message>
        <source>&amp;Undo</source>
        <translation>撤销(&amp;U)</translation>
    </message>
    <message>
        <source>Take the last edit back</source>
        <translation>撤销上一次修改</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>重做(&amp;R)</translation>
    </message>
    <message>
        <source>Make the edit again</source>
        <translation>重做被撤销的修改</translation>
    </message>
    <message>
        <source>&amp;Task</source>
        <translation>任务(&amp;T)</translation>
    </message>
    <message>
        <source>&amp;Start</source>
        <translation>启动(&amp;S)</translation>
    </message>
    <message>
        <source>Start the selected task</source>
        <translation>启动选中的任务</translation>
    </message>
    <message>
        <source>S&amp;top</source>
        <translation>停止(&amp;T)</translation>
    </message>
    <message>
        <source>Stop the selected task</source>
        <translation>停止选中的任务</translation>
    </message>
    <message>
        <source>Run &amp;once</source>
        <translation>单次运行(&amp;O)</translation>
    </message>
    <message>
        <source>Run the selected task once</source>
        <translation>把选中的任务运行一次</translation>
    </message>
    <message>
        <source>Start a&amp;ll</source>
        <translation>全部启动(&amp;L)</translation>
    </message>
    <message>
        <source>Start all tasks</source>
        <translation>启动所有任务</translation>
    </message>
    <message>
        <source>Stop all</source>
        <translation>全部停止</translation>
    </message>
    <message>
        <source>Stop all tasks</source>
        <translation>停止所有任务</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>视图(&amp;V)</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>帮助(&amp;H)</translation>
    </message>
    <message>
        <source>&amp;About…</source>
        <translation>关于(&amp;A)…</translation>
    </message>
    <message>
        <source>Tasks</source>
        <translation>任务</translation>
    </message>
    <message>
        <source>View %1</source>
        <translation>视图 %1</translation>
    </message>
    <message>
        <source>Log</source>
        <translation>日志</translation>
    </message>
    <message>
        <source>Store</source>
        <translation>数据</translation>
    </message>
    <message>
        <source>%1[*] – Oculinex Workbench</source>
        <translation>%1[*] – Oculinex 工作台</translation>
    </message>
    <message>
        <source>&amp;Undo %1</source>
        <translation>撤销 %1(&amp;U)</translation>
    </message>
    <message>
        <source>&amp;Redo %1</source>
        <translation>重做 %1(&amp;R)</translation>
    </message>
    <message>
        <source>Tasks files (*.tasks);;All files (*)</source>
        <translation>任务文件 (*.tasks);;所有文件 (*)</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>打开</translation>
    </message>
    <message>
        <source>The log tells what is odd about this file.</source>
        <translation>此文件有可疑之处，详见日志。</translation>
    </message>
    <message>
        <source>What the workbench keeps beside the tasks file is left out.
%1</source>
        <translation>工作台在任务文件旁保存的内容未能读取。
%1</translation>
    </message>
    <message>
        <source>Save the tasks file</source>
        <translation>保存任务文件</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>保存</translation>
    </message>
    <message>
        <source>Saved %1</source>
        <translation>已保存 %1</translation>
    </message>
    <message>
        <source>None yet</source>
        <translation>暂无</translation>
    </message>
    <message>
        <source>Unsaved changes</source>
        <translation>未保存的修改</translation>
    </message>
    <message>
        <source>Save the changes to %1?</source>
        <translation>要保存对 %1 的修改吗？</translation>
    </message>
    <message>
        <source>&amp;Discard</source>
        <translation>不保存(&amp;D)</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <source>Waiting for the tasks to stop…</source>
        <translation>正在等待任务停止…</translation>
    </message>
    <message>
        <source>Close without waiting</source>
        <translation>不等待，直接关闭</translation>
    </message>
    <message>
        <source>Stopping</source>
        <translation>正在停止</translation>
    </message>
    <message>
        <source>About</source>
        <translation>关于</translation>
    </message>
    <message>
        <source>&lt;h3&gt;Oculinex Workbench %1&lt;/h3&gt;&lt;p&gt;Builds, tries and watches the tasks of vision devices.&lt;/p&gt;</source>
        <translation>&lt;h3&gt;Oculinex 工作台 %1&lt;/h3&gt;&lt;p&gt;搭建、试运行和观察视觉设备的任务。&lt;/p&gt;</translation>
    </message>
    <message>
        <source>Saving loses the data source of these tasks, since it can&apos;t be made here. Its plug-in may be missing.
%1</source>
        <translation>保存会丢失以下任务的数据源，因为在此无法创建它，可能缺少其插件。
%1</translation>
    </message>
</context>
<context>
    <name>MemoryDiskDock</name>
    <message>
        <source>Memory disks</source>
        <translation>内存盘</translation>
    </message>
</context>
<context>
    <name>OperatorMode</name>
    <message>
        <source>&amp;Operator view</source>
        <translation>操作员界面(&amp;O)</translation>
    </message>
    <message>
        <source>Show what the operator sees, on the whole screen</source>
        <translation>全屏显示操作员看到的内容</translation>
    </message>
    <message>
        <source>What the operator &amp;sees…</source>
        <translation>操作员界面的内容(&amp;S)…</translation>
    </message>
    <message>
        <source>Choose view, verdict and settings of the operator view</source>
        <translation>选择操作员界面的视图、判定方式和参数</translation>
    </message>
</context>
<context>
    <name>OperatorWindow</name>
    <message>
        <source>Start</source>
        <translation>启动</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>停止</translation>
    </message>
    <message>
        <source>Operator view</source>
        <translation>操作员界面</translation>
    </message>
    <message>
        <source>Runs</source>
        <translation>运行</translation>
    </message>
    <message>
        <source>Good</source>
        <translation>合格</translation>
    </message>
    <message>
        <source>Bad</source>
        <translation>不合格</translation>
    </message>
    <message>
        <source>Pictures</source>
        <translation>图像</translation>
    </message>
    <message>
        <source>Failures</source>
        <translation>出错</translation>
    </message>
    <message>
        <source>%1 to %2; can be changed while the task stands still</source>
        <translation>%1 到 %2；任务停止时可以修改</translation>
    </message>
    <message>
        <source>Leave (Esc)</source>
        <translation>离开 (Esc)</translation>
    </message>
    <message>
        <source>A step has stopped the task.</source>
        <translation>有步骤停止了任务。</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>合格</translation>
    </message>
    <message>
        <source>NOK</source>
        <translation>不合格</translation>
    </message>
    <message>
        <source>Set %1</source>
        <translation>设定 %1</translation>
    </message>
</context>
<context>
    <name>SideFile</name>
    <message>
        <source>it holds no object</source>
        <translation>其中没有对象</translation>
    </message>
</context>
<context>
    <name>StepTable</name>
    <message>
        <source>Step</source>
        <translation>步骤</translation>
    </message>
    <message>
        <source>Limit</source>
        <translation>次数</translation>
    </message>
    <message>
        <source>Test run</source>
        <translation>试运行</translation>
    </message>
    <message>
        <source>On</source>
        <translation>启用</translation>
    </message>
    <message>
        <source>Last</source>
        <translation>最近</translation>
    </message>
    <message>
        <source>Mean</source>
        <translation>平均</translation>
    </message>
    <message>
        <source>Worst</source>
        <translation>最长</translation>
    </message>
    <message>
        <source>Result</source>
        <translation>结果</translation>
    </message>
    <message>
        <source>What the step does; edit it to describe it in your own words</source>
        <translation>步骤的作用；可以改成自己的说明</translation>
    </message>
    <message>
        <source>How many runs execute the step: -1 all, 0 none, 999999999 only the end of the task</source>
        <translation>多少次运行执行此步骤：-1 每次，0 从不，999999999 只在任务结束时</translation>
    </message>
    <message>
        <source>Milliseconds in the last run to a step</source>
        <translation>上一次执行到某步骤时的毫秒数</translation>
    </message>
    <message>
        <source>Whether the step is executed; its limit comes back when it is switched on</source>
        <translation>是否执行此步骤；重新启用时恢复原来的次数</translation>
    </message>
    <message>
        <source>Milliseconds of the last execution</source>
        <translation>最近一次执行的毫秒数</translation>
    </message>
    <message>
        <source>Mean of all executions since the start, in milliseconds</source>
        <translation>启动以来各次执行的平均毫秒数</translation>
    </message>
    <message>
        <source>Longest execution since the start, in milliseconds</source>
        <translation>启动以来最长一次执行的毫秒数</translation>
    </message>
    <message>
        <source>What the step returned last</source>
        <translation>步骤最近一次返回的内容</translation>
    </message>
</context>
<context>
    <name>StorePane</name>
    <message>
        <source>Name</source>
        <translation>名称</translation>
    </message>
    <message>
        <source>ID</source>
        <translation>ID</translation>
    </message>
    <message>
        <source>Contents</source>
        <translation>内容</translation>
    </message>
    <message>
        <source>Description</source>
        <translation>描述</translation>
    </message>
    <message>
        <source>colour picture, %1</source>
        <translation>彩色图像，%1</translation>
    </message>
    <message>
        <source>grey picture, %1</source>
        <translation>灰度图像，%1</translation>
    </message>
    <message>
        <source>16-bit picture, %1</source>
        <translation>16 位图像，%1</translation>
    </message>
    <message numerus="yes">
        <source>%n point(s)</source>
        <translation>
            <numerusform>%n 个点</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n line(s)</source>
        <translation>
            <numerusform>%n 条线</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n polygon(s)</source>
        <translation>
            <numerusform>%n 个多边形</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n area(s)</source>
        <translation>
            <numerusform>%n 个区域</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n text(s)</source>
        <translation>
            <numerusform>%n 段文字</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n integer(s)</source>
        <translation>
            <numerusform>%n 个整数</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n number(s)</source>
        <translation>
            <numerusform>%n 个数</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n truth value(s)</source>
        <translation>
            <numerusform>%n 个真假值</numerusform>
        </translation>
    </message>
    <message>
        <source>Run the flow to a step to see here what its store holds then.</source>
        <translation>把流程执行到某个步骤后，这里显示那时的数据。</translation>
    </message>
    <message>
        <source>Value</source>
        <translation>值</translation>
    </message>
    <message>
        <source>from x</source>
        <translation>起点 x</translation>
    </message>
    <message>
        <source>from y</source>
        <translation>起点 y</translation>
    </message>
    <message>
        <source>to x</source>
        <translation>终点 x</translation>
    </message>
    <message>
        <source>to y</source>
        <translation>终点 y</translation>
    </message>
    <message>
        <source>Corners</source>
        <translation>顶点</translation>
    </message>
    <message>
        <source>Pixels</source>
        <translation>像素</translation>
    </message>
    <message>
        <source>Left</source>
        <translation>左</translation>
    </message>
    <message>
        <source>Top</source>
        <translation>上</translation>
    </message>
    <message>
        <source>Width</source>
        <translation>宽</translation>
    </message>
    <message>
        <source>Height</source>
        <translation>高</translation>
    </message>
    <message>
        <source>yes</source>
        <translation>是</translation>
    </message>
    <message>
        <source>no</source>
        <translation>否</translation>
    </message>
</context>
<context>
    <name>TaskList</name>
    <message>
        <source>Starting…</source>
        <translation>启动中…</translation>
    </message>
    <message>
        <source>Stopping…</source>
        <translation>停止中…</translation>
    </message>
    <message>
        <source>One run…</source>
        <translation>单次运行中…</translation>
    </message>
    <message>
        <source>Task</source>
        <translation>任务</translation>
    </message>
    <message>
        <source>State</source>
        <translation>状态</translation>
    </message>
    <message>
        <source>Runs/s</source>
        <translation>次/秒</translation>
    </message>
    <message>
        <source>Last error</source>
        <translation>最近的错误</translation>
    </message>
    <message>
        <source>&amp;Add task</source>
        <translation>添加任务(&amp;A)</translation>
    </message>
    <message>
        <source>Add a task at the end</source>
        <translation>在末尾添加任务</translation>
    </message>
    <message>
        <source>&amp;Duplicate task</source>
        <translation>复制任务(&amp;D)</translation>
    </message>
    <message>
        <source>Add a copy of this task at the end</source>
        <translation>在末尾添加此任务的副本</translation>
    </message>
    <message>
        <source>Re&amp;name task</source>
        <translation>重命名任务(&amp;N)</translation>
    </message>
    <message>
        <source>Give this task another name</source>
        <translation>给此任务另起名称</translation>
    </message>
    <message>
        <source>&amp;Remove task</source>
        <translation>移除任务(&amp;R)</translation>
    </message>
    <message>
        <source>Remove this task; undo brings it back</source>
        <translation>移除此任务，可以撤销</translation>
    </message>
    <message>
        <source>Move task &amp;up</source>
        <translation>上移任务(&amp;U)</translation>
    </message>
    <message>
        <source>Move this task up in the list</source>
        <translation>在列表中上移</translation>
    </message>
    <message>
        <source>Move task d&amp;own</source>
        <translation>下移任务(&amp;O)</translation>
    </message>
    <message>
        <source>Move this task down in the list</source>
        <translation>在列表中下移</translation>
    </message>
    <message>
        <source>Running</source>
        <translation>运行中</translation>
    </message>
    <message>
        <source>Failed</source>
        <translation>出错</translation>
    </message>
    <message>
        <source>Stopped</source>
        <translation>已停止</translation>
    </message>
    <message>
        <source>Step %1 for %2</source>
        <translation>步骤 %1 已用 %2</translation>
    </message>
    <message>
        <source>Task %1</source>
        <translation>任务 %1</translation>
    </message>
</context>
<context>
    <name>ViewPane</name>
    <message>
        <source>The size of the view in pixels, in which the tasks draw</source>
        <translation>任务绘图所用的视图尺寸（像素）</translation>
    </message>
    <message>
        <source>As the pane</source>
        <translation>与窗格相同</translation>
    </message>
    <message>
        <source>View %1</source>
        <translation>视图 %1</translation>
    </message>
    <message>
        <source>Whole</source>
        <translation>全图</translation>
    </message>
    <message>
        <source>Show the whole view (double click)</source>
        <translation>显示整个视图（双击）</translation>
    </message>
    <message>
        <source>1:1</source>
        <translation>1:1</translation>
    </message>
    <message>
        <source>Show each pixel as one of the screen</source>
        <translation>按屏幕像素一比一显示</translation>
    </message>
    <message>
        <source>Save picture…</source>
        <translation>保存…</translation>
    </message>
    <message>
        <source>Save what is shown as a picture</source>
        <translation>把显示的内容存为图像</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>复制</translation>
    </message>
    <message>
        <source>Copy what is shown to the clipboard</source>
        <translation>把显示的内容复制到剪贴板</translation>
    </message>
    <message>
        <source>Save view %1</source>
        <translation>保存视图 %1</translation>
    </message>
    <message>
        <source>view%1.png</source>
        <translation>视图%1.png</translation>
    </message>
    <message>
        <source>Pictures (*.png *.jpg *.bmp)</source>
        <translation>图像 (*.png *.jpg *.bmp)</translation>
    </message>
    <message>
        <source>%1 could not be written: %2</source>
        <translation>%1 无法写入：%2</translation>
    </message>
    <message>
        <source>No picture yet</source>
        <translation>还没有图像</translation>
    </message>
    <message>
        <source>%1, %2: red %3, green %4, blue %5</source>
        <translation>%1, %2：红 %3，绿 %4，蓝 %5</translation>
    </message>
</context>
<context>
    <name>OperatorPick</name>
    <message>
        <source>no limit</source>
        <translation>不限</translation>
    </message>
</context>
<context>
    <name>ParamKind</name>
    <message>
        <source>colour picture</source>
        <translation>彩色图像</translation>
    </message>
    <message>
        <source>grey picture</source>
        <translation>灰度图像</translation>
    </message>
    <message>
        <source>16-bit picture</source>
        <translation>16 位图像</translation>
    </message>
    <message>
        <source>point list</source>
        <translation>点集</translation>
    </message>
    <message>
        <source>line list</source>
        <translation>线段集</translation>
    </message>
    <message>
        <source>polygon list</source>
        <translation>多边形集</translation>
    </message>
    <message>
        <source>area list</source>
        <translation>区域集</translation>
    </message>
    <message>
        <source>string list</source>
        <translation>字符串集</translation>
    </message>
    <message>
        <source>integer list</source>
        <translation>整数集</translation>
    </message>
    <message>
        <source>number list</source>
        <translation>数值集</translation>
    </message>
    <message>
        <source>truth list</source>
        <translation>真值集</translation>
    </message>
</context>
<context>
    <name>TaskCheck</name>
    <message>
        <source>the value of &apos;%1&apos; holds the marker &apos;%2&apos;</source>
        <translation>&apos;%1&apos; 的值中含有标记 &apos;%2&apos;</translation>
    </message>
    <message>
        <source>&apos;&lt;-%1-&gt;&apos; holds %2, which is no number and read as 0</source>
        <translation>&apos;&lt;-%1-&gt;&apos; 的值 %2 不是数字，按 0 读取</translation>
    </message>
    <message>
        <source>an empty &apos;%1&apos; block ends the reading</source>
        <translation>空的 &apos;%1&apos; 块使读取中止</translation>
    </message>
    <message>
        <source>stray marker &apos;%1&apos;</source>
        <translation>多余的标记 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>text outside any block: %1</source>
        <translation>块外的文字：%1</translation>
    </message>
    <message>
        <source>never runs: its limit &apos;&lt;-MaxExeTimes-&gt;&apos; is missing</source>
        <translation>从不运行：缺少次数上限 &apos;&lt;-MaxExeTimes-&gt;&apos;</translation>
    </message>
    <message>
        <source>never runs: its limit is 0</source>
        <translation>从不运行：次数上限为 0</translation>
    </message>
    <message>
        <source>unknown algorithm &apos;%1&apos;</source>
        <translation>未知的算法 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>no data source</source>
        <translation>没有数据源</translation>
    </message>
    <message>
        <source>unknown data source &apos;%1&apos;</source>
        <translation>未知的数据源 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>the data source delivers nothing: its output ID is not at least 1</source>
        <translation>数据源不输出任何图像：输出 ID 小于 1</translation>
    </message>
    <message>
        <source>the data source delivers nothing: its output type is &apos;%1&apos;, not &apos;RGB&apos; or &apos;Gray8&apos;</source>
        <translation>数据源不输出任何图像：输出类型为 &apos;%1&apos;，而不是 &apos;RGB&apos; 或 &apos;Gray8&apos;</translation>
    </message>
    <message>
        <source>&lt;%1&gt; holds no number</source>
        <translation>&lt;%1&gt; 的值不是数字</translation>
    </message>
    <message>
        <source>&lt;%1&gt; is below 0: the step fails</source>
        <translation>&lt;%1&gt; 小于 0：步骤会失败</translation>
    </message>
    <message>
        <source>&lt;%1&gt; is below 0: the step does nothing</source>
        <translation>&lt;%1&gt; 小于 0：步骤什么也不做</translation>
    </message>
    <message>
        <source>&lt;%1&gt; is -1: every run adds another %2 to the store</source>
        <translation>&lt;%1&gt; 为 -1：每次运行都会在数据中新增一个%2</translation>
    </message>
    <message>
        <source>; step %1 writes it</source>
        <translation>；步骤 %1 写入它</translation>
    </message>
    <message>
        <source>; the data source writes the %1 of that ID</source>
        <translation>；数据源写入的是该 ID 的%1</translation>
    </message>
    <message>
        <source>; step %1 writes the %2 of that ID</source>
        <translation>；步骤 %1 写入的是该 ID 的%2</translation>
    </message>
    <message>
        <source>reads %1 %2 (&lt;%3&gt;), which nothing before it writes%4</source>
        <translation>读取%1 %2 (&lt;%3&gt;)，而在它之前没有步骤写入%4</translation>
    </message>
    <message>
        <source>task %1</source>
        <translation>任务 %1</translation>
    </message>
    <message>
        <source>task &apos;%1&apos;</source>
        <translation>任务 &apos;%1&apos;</translation>
    </message>
    <message>
        <source> step %1 (%2)</source>
        <translation> 步骤 %1 (%2)</translation>
    </message>
</context>
</TS>
