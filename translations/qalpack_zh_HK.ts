<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_HK">
<context>
    <name>AccountListView</name>
    <message>
        <source>Account Explorer</source>
        <translation>戶口瀏覽</translation>
    </message>
    <message>
        <source>Search</source>
        <translation>搜尋</translation>
    </message>
    <message>
        <source>User</source>
        <translation>用戶</translation>
    </message>
    <message>
        <source>Account Shortcut</source>
        <translation>戶口快捷鍵</translation>
    </message>
    <message>
        <source>Update</source>
        <translation>更新</translation>
    </message>
    <message>
        <source>Remove</source>
        <translation>移除</translation>
    </message>
</context>
<context>
    <name>AccountModel</name>
    <message>
        <source>SUSPEND</source>
        <translation>暫停</translation>
    </message>
</context>
<context>
    <name>AcctEdit</name>
    <message>
        <source>Account Invalid.</source>
        <translation>戶口無效。</translation>
    </message>
</context>
<context>
    <name>AcctListView</name>
    <message>
        <source>Account ID</source>
        <translation>戶口號碼</translation>
    </message>
    <message>
        <source>English Name</source>
        <translation>英文名稱</translation>
    </message>
    <message>
        <source>Chinese Name</source>
        <translation>中文名稱</translation>
    </message>
    <message>
        <source>Client ID</source>
        <translation>客戶編號</translation>
    </message>
    <message>
        <source>Day Phone</source>
        <translation>日間電話</translation>
    </message>
    <message>
        <source>Home Phone</source>
        <translation>住宅電話</translation>
    </message>
    <message>
        <source>Mobile</source>
        <translation>手提電話</translation>
    </message>
    <message>
        <source>Fax</source>
        <translation>傳真</translation>
    </message>
    <message>
        <source>ID</source>
        <translation>編號</translation>
    </message>
    <message>
        <source>Shortcut</source>
        <translation>快捷鍵</translation>
    </message>
    <message>
        <source>&lt;SHOW ALL&gt;</source>
        <translation>&lt;顯示全部&gt;</translation>
    </message>
    <message>
        <source>Account Selected</source>
        <translation>已選戶口</translation>
    </message>
    <message>
        <source>None</source>
        <translation>無</translation>
    </message>
    <message>
        <source>Shortcut conflict !</source>
        <translation>快捷鍵衝突！</translation>
    </message>
</context>
<context>
    <name>DeskWindow</name>
    <message>
        <source>Order Desk - %1 %2</source>
        <translation>落盤台 - %1 %2</translation>
    </message>
    <message>
        <source>Logged on as %1 (%2 orders today)</source>
        <translation>已登入：%1（今日 %2 張買賣盤）</translation>
    </message>
</context>
<context>
    <name>LogonDialog</name>
    <message>
        <source>Log On</source>
        <translation>登入</translation>
    </message>
    <message>
        <source>Choose the dealer to log on as:</source>
        <translation>請選擇登入的交易員：</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
</context>
<context>
    <name>OpenCloseSelect</name>
    <message>
        <source>Not Specify</source>
        <translation>未指定</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>開倉</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>平倉</translation>
    </message>
</context>
<context>
    <name>OrderBlotterModel</name>
    <message>
        <source>Order No</source>
        <translation>盤號</translation>
    </message>
    <message>
        <source>Account</source>
        <translation>戶口</translation>
    </message>
    <message>
        <source>Side</source>
        <translation>買賣</translation>
    </message>
    <message>
        <source>Symbol</source>
        <translation>代號</translation>
    </message>
    <message>
        <source>Qty</source>
        <translation>數量</translation>
    </message>
    <message>
        <source>Price</source>
        <translation>價格</translation>
    </message>
    <message>
        <source>Status</source>
        <translation>狀態</translation>
    </message>
    <message>
        <source>Filled</source>
        <translation>已成交</translation>
    </message>
    <message>
        <source>Remaining</source>
        <translation>剩餘</translation>
    </message>
    <message>
        <source>Queued</source>
        <translation>排隊</translation>
    </message>
    <message>
        <source>Exch</source>
        <translation>交易所</translation>
    </message>
    <message>
        <source>Created</source>
        <translation>落盤時間</translation>
    </message>
    <message>
        <source>Remark</source>
        <translation>備註</translation>
    </message>
</context>
<context>
    <name>OrderTicket</name>
    <message>
        <source>Manual</source>
        <translation>手動</translation>
    </message>
    <message>
        <source>Odd lot</source>
        <translation>碎股</translation>
    </message>
    <message>
        <source>Short sell</source>
        <translation>賣空</translation>
    </message>
    <message>
        <source>Fill or kill</source>
        <translation>全數成交或取消</translation>
    </message>
    <message>
        <source>Fill and kill</source>
        <translation>成交並取消</translation>
    </message>
    <message>
        <source>At-auction</source>
        <translation>競價盤</translation>
    </message>
    <message>
        <source>Enhanced limit</source>
        <translation>增強限價盤</translation>
    </message>
    <message>
        <source>Good till week</source>
        <translation>本週有效</translation>
    </message>
    <message>
        <source>Market order</source>
        <translation>市價盤</translation>
    </message>
    <message>
        <source>SEHK stocks</source>
        <translation>聯交所股票</translation>
    </message>
    <message>
        <source>HKFE futures</source>
        <translation>期交所期貨</translation>
    </message>
    <message>
        <source>Account</source>
        <translation>戶口</translation>
    </message>
    <message>
        <source>Market</source>
        <translation>市場</translation>
    </message>
    <message>
        <source>Symbol</source>
        <translation>代號</translation>
    </message>
    <message>
        <source>Price</source>
        <translation>價格</translation>
    </message>
    <message>
        <source>Quantity</source>
        <translation>數量</translation>
    </message>
    <message>
        <source>Open/Close</source>
        <translation>開/平倉</translation>
    </message>
    <message>
        <source>Principal</source>
        <translation>主事人</translation>
    </message>
    <message>
        <source>Buy</source>
        <translation>買入</translation>
    </message>
    <message>
        <source>Sell</source>
        <translation>賣出</translation>
    </message>
    <message>
        <source>Board lot %1</source>
        <translation>每手 %1</translation>
    </message>
    <message>
        <source>Order not saved: %1</source>
        <translation>買賣盤未能儲存：%1</translation>
    </message>
    <message>
        <source>Order %1 saved: %2 %3 %4 @ %5</source>
        <translation>買賣盤 %1 已儲存：%2 %3 %4 @ %5</translation>
    </message>
</context>
<context>
    <name>PrincipalSelect</name>
    <message>
        <source>Not Specify</source>
        <translation>未指定</translation>
    </message>
    <message>
        <source>Client</source>
        <translation>客戶</translation>
    </message>
    <message>
        <source>House</source>
        <translation>公司</translation>
    </message>
    <message>
        <source>RT</source>
        <translation>登記交易員</translation>
    </message>
</context>
<context>
    <name>ResourceLabel</name>
    <message>
        <source>BUY</source>
        <translation>買入</translation>
    </message>
    <message>
        <source>SELL</source>
        <translation>賣出</translation>
    </message>
    <message>
        <source>UNKNOWN</source>
        <translation>不明</translation>
    </message>
    <message>
        <source>DEPOSIT</source>
        <translation>存入</translation>
    </message>
    <message>
        <source>WITHDRAW</source>
        <translation>提取</translation>
    </message>
    <message>
        <source>Reje</source>
        <translation>拒絕</translation>
    </message>
    <message>
        <source>Pend</source>
        <translation>待處理</translation>
    </message>
    <message>
        <source>Part</source>
        <translation>部分成交</translation>
    </message>
    <message>
        <source>Inac</source>
        <translation>未生效</translation>
    </message>
    <message>
        <source>Queu</source>
        <translation>排隊中</translation>
    </message>
    <message>
        <source>Canc</source>
        <translation>已取消</translation>
    </message>
    <message>
        <source>Conf</source>
        <translation>已確認</translation>
    </message>
    <message>
        <source>Comp</source>
        <translation>全部成交</translation>
    </message>
    <message>
        <source>Unkn</source>
        <translation>不明</translation>
    </message>
    <message>
        <source>Part Canc</source>
        <translation>部分取消</translation>
    </message>
    <message>
        <source>Alloc</source>
        <translation>已分配</translation>
    </message>
    <message>
        <source>SYMBOL</source>
        <translation>代號</translation>
    </message>
    <message>
        <source>A/C</source>
        <translation>戶口</translation>
    </message>
    <message>
        <source>EXE TIME</source>
        <translation>成交時間</translation>
    </message>
    <message>
        <source>B/S</source>
        <translation>買/賣</translation>
    </message>
    <message>
        <source>USER</source>
        <translation>用戶</translation>
    </message>
    <message>
        <source>SOURCE</source>
        <translation>來源</translation>
    </message>
    <message>
        <source>REMARK</source>
        <translation>備註</translation>
    </message>
    <message>
        <source>APPR ID</source>
        <translation>批核人</translation>
    </message>
    <message>
        <source>Pending Canc</source>
        <translation>待取消</translation>
    </message>
    <message>
        <source>Please logout and logon again to activate this setting</source>
        <translation>請登出後重新登入，以啟用此設定</translation>
    </message>
    <message>
        <source>Account Invalid</source>
        <translation>戶口無效</translation>
    </message>
    <message>
        <source>Invalid user or password !</source>
        <translation>用戶名稱或密碼無效！</translation>
    </message>
    <message>
        <source>Do you want to save these settings?</source>
        <translation>是否儲存這些設定？</translation>
    </message>
    <message>
        <source>Please input numerical for AP!</source>
        <translation>平均價請輸入數字！</translation>
    </message>
    <message>
        <source>please input numerical in Cost(bp)</source>
        <translation>成本（基點）請輸入數字</translation>
    </message>
    <message>
        <source>No Matching Record.</source>
        <translation>沒有相符的紀錄。</translation>
    </message>
    <message>
        <source>that a row is not selected</source>
        <translation>未有選取任何一行</translation>
    </message>
    <message>
        <source>New password cannot be the same as old password.</source>
        <translation>新密碼不可與舊密碼相同。</translation>
    </message>
    <message>
        <source>The new password is not same as the re-enter password<byte value="xd"/>
Please enter again</source>
        <translation>新密碼與再次輸入的密碼不符<byte value="xd"/>
請重新輸入</translation>
    </message>
    <message>
        <source>The password is not correct</source>
        <translation>密碼不正確</translation>
    </message>
    <message>
        <source>Your password length should between %d to %d</source>
        <translation>密碼長度須介乎 %d 至 %d 個字元</translation>
    </message>
    <message>
        <source>Password change successful.</source>
        <translation>密碼已成功更改。</translation>
    </message>
    <message>
        <source>Change Order?</source>
        <translation>更改買賣盤？</translation>
    </message>
    <message>
        <source>Remaining Qty</source>
        <translation>剩餘數量</translation>
    </message>
    <message>
        <source>Cancel Order</source>
        <translation>取消買賣盤</translation>
    </message>
    <message>
        <source>Close Position</source>
        <translation>平倉</translation>
    </message>
    <message>
        <source>Queued Quantity</source>
        <translation>排隊數量</translation>
    </message>
    <message>
        <source>Client ID</source>
        <translation>客戶編號</translation>
    </message>
    <message>
        <source>Calculate this order?<byte value="xd"/>
</source>
        <translation>計算此買賣盤？<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>Account : %s<byte value="xd"/>
</source>
        <translation>戶口 : %s<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>Symbol : %s<byte value="xd"/>
</source>
        <translation>代號 : %s<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>Qty : %s<byte value="xd"/>
</source>
        <translation>數量 : %s<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>Price : %s<byte value="xd"/>
</source>
        <translation>價格 : %s<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>Side : %s<byte value="xd"/>
</source>
        <translation>買賣 : %s<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>Option : %s</source>
        <translation>指示 : %s</translation>
    </message>
    <message>
        <source>Change this order?<byte value="xd"/>
</source>
        <translation>更改此買賣盤？<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>Order : %s<byte value="xd"/>
</source>
        <translation>買賣盤 : %s<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>New Qty : %s<byte value="xd"/>
</source>
        <translation>新數量 : %s<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>Remain Qty : %s<byte value="xd"/>
</source>
        <translation>剩餘數量 : %s<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>New Price : %s<byte value="xd"/>
</source>
        <translation>新價格 : %s<byte value="xd"/>
</translation>
    </message>
    <message>
        <source>New Total Amount: %s </source>
        <translation>新總金額: %s </translation>
    </message>
    <message>
        <source>Generate Group ID Fail!</source>
        <translation>產生組別編號失敗！</translation>
    </message>
    <message>
        <source>%s Should be late than Active Day.</source>
        <translation>%s 須遲於生效日。</translation>
    </message>
    <message>
        <source>Enhance Order Depth</source>
        <translation>增強買賣盤深度</translation>
    </message>
    <message>
        <source>Order size for [%s ] is more than %d, Press OK to confirm.</source>
        <translation>[%s ] 的買賣盤數量超過 %d，請按「OK」確認。</translation>
    </message>
    <message>
        <source>Book OddLot</source>
        <translation>登記碎股</translation>
    </message>
    <message>
        <source>The Quantity is Invalid.</source>
        <translation>數量無效。</translation>
    </message>
    <message>
        <source>Loading spread (%s) error. Reset order input spread size to 1.</source>
        <translation>載入價位表 (%s) 出錯，輸入價位改為每格 1。</translation>
    </message>
    <message>
        <source>VWAP</source>
        <translation>成交量加權平均價</translation>
    </message>
    <message>
        <source>Balance</source>
        <translation>平衡</translation>
    </message>
    <message>
        <source>Aggressive</source>
        <translation>進取</translation>
    </message>
    <message>
        <source>Conservative</source>
        <translation>保守</translation>
    </message>
</context>
<context>
    <name>SystemAlert</name>
    <message>
        <source>System Alert</source>
        <translation>系統警示</translation>
    </message>
</context>
<context>
    <name>exchData</name>
    <message>
        <source>C</source>
        <translation>客</translation>
    </message>
    <message>
        <source>H</source>
        <translation>公</translation>
    </message>
    <message>
        <source>RT</source>
        <translation>登</translation>
    </message>
    <message>
        <source>U</source>
        <translation>未</translation>
    </message>
    <message>
        <source>O.Lot</source>
        <translation>碎股</translation>
    </message>
    <message>
        <source>Manu</source>
        <translation>手動</translation>
    </message>
    <message>
        <source>PO</source>
        <translation>開市前</translation>
    </message>
    <message>
        <source>OS</source>
        <translation>海外</translation>
    </message>
    <message>
        <source>N.H.</source>
        <translation>非對沖</translation>
    </message>
    <message>
        <source>O.H.</source>
        <translation>開倉對沖</translation>
    </message>
    <message>
        <source>L.H.</source>
        <translation>平倉對沖</translation>
    </message>
    <message>
        <source>N</source>
        <translation>否</translation>
    </message>
    <message>
        <source>S.S.</source>
        <translation>賣空</translation>
    </message>
    <message>
        <source>M.S.S</source>
        <translation>莊家賣空</translation>
    </message>
    <message>
        <source>C.S.S</source>
        <translation>補倉賣空</translation>
    </message>
    <message>
        <source>Normal</source>
        <translation>正常</translation>
    </message>
    <message>
        <source>Isolate</source>
        <translation>獨立</translation>
    </message>
    <message>
        <source>Buy In</source>
        <translation>強制補購</translation>
    </message>
    <message>
        <source>SS;</source>
        <translation>賣空;</translation>
    </message>
    <message>
        <source>Odd;</source>
        <translation>碎股;</translation>
    </message>
    <message>
        <source>House;</source>
        <translation>公司;</translation>
    </message>
    <message>
        <source>RT;</source>
        <translation>登記交易員;</translation>
    </message>
    <message>
        <source>STP:%.3f;</source>
        <translation>止蝕:%.3f;</translation>
    </message>
    <message>
        <source>STU:%.3f;</source>
        <translation>升穿觸發:%.3f;</translation>
    </message>
    <message>
        <source>STD:%.3f;</source>
        <translation>跌穿觸發:%.3f;</translation>
    </message>
    <message>
        <source>Open;</source>
        <translation>開倉;</translation>
    </message>
    <message>
        <source>Close;</source>
        <translation>平倉;</translation>
    </message>
    <message>
        <source>FAK;</source>
        <translation>成交並取消;</translation>
    </message>
    <message>
        <source>FOK;</source>
        <translation>全數成交或取消;</translation>
    </message>
    <message>
        <source>AO;</source>
        <translation>競價盤;</translation>
    </message>
    <message>
        <source>Enhanced;</source>
        <translation>增強限價;</translation>
    </message>
    <message>
        <source>Work;</source>
        <translation>工作盤;</translation>
    </message>
    <message>
        <source>Void;</source>
        <translation>作廢;</translation>
    </message>
    <message>
        <source>GTC%s;</source>
        <translation>取消前有效%s;</translation>
    </message>
    <message>
        <source>PTA:%s;</source>
        <translation>交易前:%s;</translation>
    </message>
    <message>
        <source>mSEQ:%s;</source>
        <translation>序號:%s;</translation>
    </message>
    <message>
        <source>PASS:%s;</source>
        <translation>通過:%s;</translation>
    </message>
    <message>
        <source>CD Order;</source>
        <translation>條件盤;</translation>
    </message>
    <message>
        <source>Open End;</source>
        <translation>無限期;</translation>
    </message>
    <message>
        <source>Dealer=%s;</source>
        <translation>交易員=%s;</translation>
    </message>
</context>
<context>
    <name>omsData</name>
    <message>
        <source>Manual;</source>
        <translation>手動;</translation>
    </message>
    <message>
        <source>OddTrd;</source>
        <translation>碎股成交;</translation>
    </message>
    <message>
        <source>ManuTrd;</source>
        <translation>手動成交;</translation>
    </message>
    <message>
        <source>BookTrd;</source>
        <translation>登記成交;</translation>
    </message>
    <message>
        <source>ALD;</source>
        <translation>已分配;</translation>
    </message>
    <message>
        <source>REV:%s;</source>
        <translation>撥回:%s;</translation>
    </message>
    <message>
        <source>ALO:%s;</source>
        <translation>分配:%s;</translation>
    </message>
    <message>
        <source>MO;</source>
        <translation>市價盤;</translation>
    </message>
    <message>
        <source>APP;</source>
        <translation>待批;</translation>
    </message>
    <message>
        <source>Time-to-Send:&lt;%s&gt; &lt;%s&gt;;</source>
        <translation>定時發送:&lt;%s&gt; &lt;%s&gt;;</translation>
    </message>
    <message>
        <source>STOP:PRICE %s,TOLER %s, STEP %s;</source>
        <translation>止蝕:價格 %s,容差 %s, 步長 %s;</translation>
    </message>
    <message>
        <source>STOP:PRICE %s,TOLER %s;</source>
        <translation>止蝕:價格 %s,容差 %s;</translation>
    </message>
    <message>
        <source>OAO ID:%s,SEQ=%s;</source>
        <translation>觸發盤 編號:%s,序號=%s;</translation>
    </message>
    <message>
        <source>OCO ID:%s,SEQ=%s;</source>
        <translation>二擇一盤 編號:%s,序號=%s;</translation>
    </message>
</context>
</TS>
